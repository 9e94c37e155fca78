#include "ExplorerForm.h"

#include "oak/framework/Application.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Console.h"

using namespace oak;

TExplorerForm::TExplorerForm(TComponent* owner) : TForm(owner) {
  SetCaption(u"Explorer");
  SetBounds(0, 0, 900, 560);
  SetPosition(poScreenCenter);
  SetKeyPreview(true);
  LayOut();
  WireUp();
  fTree.AddRoot(TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true));
  fTree.Items().GetFirstNode()->Expand(false);
}

void TExplorerForm::LayOut() {
  fTop.SetParent(this);
  fTop.SetBounds(0, 0, 100, 32);
  fTop.SetAlign(alTop);
  int left = 4;
  const std::pair<TButton*, const char16_t*> buttons[] = {
      {&fBack, u"\u2190"}, {&fForward, u"\u2192"}, {&fUp, u"\u2191"}};
  for (const auto& [button, caption] : buttons) {
    button->SetParent(&fTop);
    button->SetCaption(caption);
    button->SetBounds(left, 4, 28, 24);
    left += 30;
  }
  fPath.SetParent(&fTop);
  fPath.SetBounds(left + 2, 4, fTop.GetClientSize().Width - left - 6, 24);
  fPath.SetAnchors({akLeft, akTop, akRight});
  fStatus.SetParent(this);
  fStatus.SetBounds(0, 0, 100, 22);
  fStatus.SetAlign(alBottom);
  fTree.SetParent(this);
  fTree.SetBounds(0, 0, 240, 100);
  fTree.SetAlign(alLeft);
  fSplitter.SetParent(this);
  fSplitter.SetBounds(240, 0, 5, 100);
  fSplitter.SetAlign(alLeft);
  fList.SetParent(this);
  fList.SetAlign(alClient);
  SetActiveControl(&fList);
}

/// Whichever control the user moves, the hub takes the others along; the form only listens.
void TExplorerForm::WireUp() {
  fTree.SetImages(&fIcons);
  fList.SetSmallImages(&fIcons);
  fTree.setShellLink(&fLink);
  fList.setShellLink(&fLink);
  fLink.OnNavigating = [this](TObject*, const Ref<IItemIdList>& folder, bool& cancel) {
    CheckFolder(folder, cancel);
  };
  fLink.OnChange = [this](TObject*, const Ref<IItemIdList>& folder) { FolderChanged(folder); };
  fBack.OnClick = [this](TObject*) { fLink.MoveBack(1); };
  fForward.OnClick = [this](TObject*) { fLink.MoveForward(1); };
  fUp.OnClick = [this](TObject*) { fLink.GoUp(); };
  fPath.OnKeyDown = [this](TObject*, std::uint16_t& key, TShiftState) {
    if (key != vkReturn) return;
    key = 0;
    GoToText(fPath.GetText());
  };
  fTree.OnProblem = fList.OnProblem = [this](const TString& text) { ShowProblem(text); };
  fList.OnRefreshed = [this] { ShowStatus(); };
  fList.OnSelectItem = [this](TObject*, TListItem*, bool) {
    if (fList.IsRefreshing()) return;
    fProblem.clear();
    ShowStatus();
  };
}

/// What can't be opened must not empty the controls: they stay where they are.
void TExplorerForm::CheckFolder(const Ref<IItemIdList>& folder, bool& cancel) {
  TFolderTrek probe;
  probe.SetShowErrorMessages(false);
  try {
    probe.SetFolderIdList(folder);
    probe.GetShellFolder();
    probe.Next();
  } catch (const Exception& error) {
    cancel = true;
    ShowProblem(error.GetMessage());
  }
}

void TExplorerForm::FolderChanged(const Ref<IItemIdList>& folder) {
  if (!folder) return;
  fPath.SetText(folder->DisplayPath());
  SetCaption(folder->DisplayName(dnfInFolder) + u" - Explorer");
  fBack.SetEnabled(fLink.IsMovePossible(-1));
  fForward.SetEnabled(fLink.IsMovePossible(1));
  fUp.SetEnabled(folder->Depth() > 0);
  fProblem.clear();
  ShowStatus();
}

void TExplorerForm::GoToText(const TString& text) {
  const Ref<IItemIdList> place =
      TOakItemIdList::Parse(PathFromArgument(ToUtf8(text)), nullptr, true);
  if (place->IsInvalid() || !place->IsFolder())
    ShowProblem(u"There is no folder \u201C" + text + u"\u201D.");
  else
    GoTo(place);
}

void TExplorerForm::ShowProblem(const TString& text) {
  fProblem = text;
  ShowStatus();
}

void TExplorerForm::ForgetProblem() {
  if (fProblem.empty()) return;
  fProblem.clear();
  ShowStatus();
}

void TExplorerForm::ShowStatus() {
  if (!fProblem.empty()) return fStatus.SetCaption(fProblem);
  const int count = fList.Items().GetCount();
  TString text = IntToStr(count) + (count == 1 ? u" object" : u" objects");
  if (fList.GetSelCount() > 0) text += u", " + IntToStr(fList.GetSelCount()) + u" selected";
  fStatus.SetCaption(text);
}

void TExplorerForm::DoShow() {
  TForm::DoShow();
  if (fTree.GetSelected()) fTree.GetSelected()->MakeVisible();
}

void TExplorerForm::ChangeScale(int m, int d) {
  TForm::ChangeScale(m, d);
  fIcons.ChangeScale(m, d);
}

void TExplorerForm::KeyDown(std::uint16_t& key, TShiftState shift) {
  ForgetProblem();
  const bool alt = shift == TShiftState(ssAlt);
  const bool inList = GetActiveControl() == &fList && !fList.IsEditing();
  if ((key == vkUp && alt) || (key == vkBack && shift.IsEmpty() && inList))
    fLink.GoUp();
  else if (key == vkLeft && alt)
    fLink.MoveBack(1);
  else if (key == vkRight && alt)
    fLink.MoveForward(1);
  else if (key == vkF5)
    fLink.Refresh(rfFull);
  else
    return TForm::KeyDown(key, shift);
  key = 0;
}
