// The window of the example: places on the left, the chosen folder on the right.
#pragma once

#include "FolderList.h"
#include "PlaceTree.h"
#include "oak/framework/Forms.h"
#include "oak/framework/StdCtrls.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"

class TExplorerForm : public oak::TForm {
 public:
  explicit TExplorerForm(oak::TComponent* owner = nullptr);

  /// Shows a folder in all parts. A folder that can't be opened leaves all as it was; the status
  /// line tells why.
  void GoTo(const oak::Ref<oak::IItemIdList>& folder) { fLink.PathChanged(nullptr, folder); }
  /// Goes to what the user typed.
  void GoToText(const oak::TString& text);

  /// The status line tells it until the user goes on.
  void ShowProblem(const oak::TString& text);

  oak::TOakShellLink& GetLink() { return fLink; }
  TPlaceTree& GetTree() { return fTree; }
  TFolderList& GetList() { return fList; }
  oak::TEdit& GetPathEdit() { return fPath; }
  oak::TLabel& GetStatus() { return fStatus; }

 protected:
  void DoShow() override;
  void ChangeScale(int m, int d) override;
  void KeyDown(std::uint16_t& key, oak::TShiftState shift) override;

 private:
  void LayOut();
  void WireUp();
  void CheckFolder(const oak::Ref<oak::IItemIdList>& folder, bool& cancel);
  void FolderChanged(const oak::Ref<oak::IItemIdList>& folder);
  void ShowStatus();
  void ForgetProblem();

  oak::TOakSystemImageList fIcons{nullptr, oak::si_Small, 96};
  oak::TOakShellLink fLink{this};
  oak::TPanel fTop{this};
  oak::TButton fBack{this};
  oak::TButton fForward{this};
  oak::TButton fUp{this};
  oak::TEdit fPath{this};
  oak::TLabel fStatus{this};
  oak::TString fProblem;
  TPlaceTree fTree{this};
  oak::TSplitter fSplitter{this};
  TFolderList fList{this};
};
