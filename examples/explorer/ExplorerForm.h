// The window of the example: places on the left, the chosen folder on the right.
#pragma once

#include "FolderList.h"
#include "PlaceTree.h"
#include "oak/framework/Forms.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/StdCtrls.h"

class TExplorerForm : public oak::TForm {
 public:
  explicit TExplorerForm(oak::TComponent* owner = nullptr);

  /// Shows a folder in all parts. A folder that can't be opened leaves all as it was; the status
  /// line tells why.
  void GoTo(const oak::Ref<oak::IItemIdList>& folder);
  /// Goes to what the user typed.
  void GoToText(const oak::TString& text);
  void GoUp();

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
  void ShowStatus();

  oak::TImageList fPictures;
  oak::TPanel fTop{this};
  oak::TButton fUp{this};
  oak::TEdit fPath{this};
  oak::TLabel fStatus{this};
  TPlaceTree fTree{this};
  oak::TSplitter fSplitter{this};
  TFolderList fList{this};
};
