#include "ExplorerForm.h"

#include "Pictures.h"
#include "oak/framework/Application.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Console.h"

using namespace oak;

namespace {

TString Number(int value) {
  const std::string digits = std::to_string(value);
  return TString(digits.begin(), digits.end());
}

}  // namespace

TExplorerForm::TExplorerForm(TComponent* owner) : TForm(owner) {
  SetCaption(u"Explorer");
  SetBounds(0, 0, 900, 560);
  SetPosition(poScreenCenter);
  SetKeyPreview(true);
  FillPictures(fPictures, 16);
  LayOut();

  fTree.SetImages(&fPictures);
  fList.SetSmallImages(&fPictures);
  fUp.OnClick = [this](TObject*) { GoUp(); };
  fPath.OnKeyDown = [this](TObject*, std::uint16_t& key, TShiftState) {
    if (key != vkReturn) return;
    key = 0;
    GoToText(fPath.GetText());
  };
  fTree.OnGoTo = [this](const Ref<IItemIdList>& item) { GoTo(item); };
  fList.OnOpen = [this](const TFolderRow& row) {
    if (row.IsFolder()) return GoTo(fList.AbsoluteOf(row));
    fStatus.SetCaption(u"\u201C" + row.GetStoredCaption() + u"\u201D is a file.");
  };
  fList.OnSelectItem = [this](TObject*, TListItem*, bool) { ShowStatus(); };
  fTree.AddRoot(TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true));
  fTree.Items().GetFirstNode()->Expand(false);
}

void TExplorerForm::LayOut() {
  fTop.SetParent(this);
  fTop.SetBounds(0, 0, 100, 32);
  fTop.SetAlign(alTop);
  fUp.SetParent(&fTop);
  fUp.SetCaption(u"Up");
  fUp.SetBounds(4, 4, 48, 24);
  fPath.SetParent(&fTop);
  fPath.SetBounds(56, 4, fTop.GetClientSize().Width - 60, 24);
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

void TExplorerForm::GoTo(const Ref<IItemIdList>& folder) {
  const Ref<IItemIdList> before = fList.GetFolder();
  try {
    fList.ShowFolder(folder);
  } catch (const Exception& error) {
    fStatus.SetCaption(error.GetMessage());
    return;
  }
  fTree.SelectPlace(folder);
  fPath.SetText(folder->DisplayPath());
  SetCaption(folder->DisplayName(dnfInFolder) + u" - Explorer");
  if (before && folder->IsParentOf(before, false, ilcDisplay)) fList.SelectObject(before);
  ShowStatus();
}

void TExplorerForm::GoToText(const TString& text) {
  const Ref<IItemIdList> place =
      TOakItemIdList::Parse(PathFromArgument(ToUtf8(text)), nullptr, true);
  if (place->IsInvalid() || !place->IsFolder())
    fStatus.SetCaption(u"There is no folder \u201C" + text + u"\u201D.");
  else
    GoTo(place);
}

void TExplorerForm::GoUp() {
  const Ref<IItemIdList> folder = fList.GetFolder();
  if (folder && folder->Depth() > 0) GoTo(folder->GetParent());
}

void TExplorerForm::ShowStatus() {
  TString text = Number(fList.Items().GetCount()) + u" objects";
  if (fList.GetSelCount() > 0) text += u", " + Number(fList.GetSelCount()) + u" selected";
  fStatus.SetCaption(text);
}

void TExplorerForm::DoShow() {
  TForm::DoShow();
  if (fTree.GetSelected()) fTree.GetSelected()->MakeVisible();
}

void TExplorerForm::ChangeScale(int m, int d) {
  TForm::ChangeScale(m, d);
  FillPictures(fPictures, ScaledPixels(16));
}

void TExplorerForm::KeyDown(std::uint16_t& key, TShiftState shift) {
  const bool up = (key == vkUp && shift == TShiftState(ssAlt)) ||
                  (key == vkBack && shift.IsEmpty() && GetActiveControl() == &fList);
  if (up)
    GoUp();
  else if (key == vkF5 && fList.GetFolder())
    GoTo(fList.GetFolder());
  else
    return TForm::KeyDown(key, shift);
  key = 0;
}
