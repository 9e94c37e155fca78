// How the form's controls hang on the hub that keeps them in step.
#pragma once

#include <utility>

#include "oak/coordination/ShellLink.h"

/// A control of a hub. It navigates by itself and then tells the hub, which moves the others.
class TLinkedControl : public oak::IOakMultiSelectShellControl {
 public:
  void setShellLink(oak::TOakShellLink* link) override { Attach(link); }
  oak::TOakShellLink* getShellLink() override { return fLink; }
  void FileChanged(const oak::Ref<oak::IItemIdList>&, const oak::Ref<oak::IItemIdList>&) override {}
  void SelectAll() override {}
  bool GoUp() override { return false; }

  /// What went wrong, for the user.
  std::function<void(const oak::TString& text)> OnProblem;

 protected:
  ~TLinkedControl() { Attach(nullptr); }
  void Report(const oak::Exception& error) {
    if (OnProblem) OnProblem(error.GetMessage());
  }
  oak::Ref<oak::IItemIdList> CurrentFolder() const {
    return fLink ? fLink->GetCurrentFolderItemIdList() : nullptr;
  }

  oak::TOakShellLink* fLink = nullptr;

 private:
  void Attach(oak::TOakShellLink* link) {
    if (link == fLink) return;
    if (fLink) std::exchange(fLink, nullptr)->UnregisterShellControl(this);
    fLink = link;
    if (fLink) fLink->RegisterShellControl(this);
  }
};
