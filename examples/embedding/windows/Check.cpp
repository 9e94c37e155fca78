#include "examples/embedding/windows/Check.h"

#include <cstdio>

#include "examples/explorer/windows/PostedInput.h"
#include "oak/framework/Thread.h"

using namespace oak;

namespace {

class TCheck {
 public:
  TCheck(THostWindow& host, void (*runMessages)()) : fHost(host), fRunMessages(runMessages) {}

  bool Run(const TString& folder);

 private:
  void Expect(bool condition, const char* what) {
    if (condition) return;
    std::printf("FAILED: %s\n", what);
    fPassed = false;
  }
  TFolderList& List() { return fHost.GetBrowser()->GetList(); }
  TPlaceTree& Tree() { return fHost.GetBrowser()->GetTree(); }
  HWND ListWindow() { return List().GetHandle(); }
  HWND TreeWindow() { return Tree().GetHandle(); }

  TRect PlaceOf(HWND window) {
    RECT rect{};
    ::GetWindowRect(window, &rect);
    ::MapWindowPoints(nullptr, fHost.GetHandle(), reinterpret_cast<POINT*>(&rect), 2);
    return TRect(rect);
  }
  int CountChildren() {
    int count = 0;
    ::EnumChildWindows(
        fHost.GetHandle(),
        [](HWND, LPARAM number) -> BOOL {
          ++*reinterpret_cast<int*>(number);
          return TRUE;
        },
        reinterpret_cast<LPARAM>(&count));
    return count;
  }
  TListItem* FolderRow() {
    for (TListItem* const row : List().Items())
      if (static_cast<const TFolderRow&>(*row).IsFolder()) return row;
    return nullptr;
  }

  void CheckPlaces(const char* when);
  void CheckTree();
  void CheckKeys();
  void CheckHeader();
  void CheckDoubleClick();
  void CheckQueue();
  void CheckExchange(const TString& folder);
  void CheckEndOfWindow();

  THostWindow& fHost;
  void (*fRunMessages)();
  bool fPassed = true;
};

void TCheck::CheckPlaces(const char* when) {
  fRunMessages();
  RECT client{};
  ::GetClientRect(fHost.GetHandle(), &client);
  Expect(::GetParent(ListWindow()) == fHost.GetHandle() &&
             ::GetParent(TreeWindow()) == fHost.GetHandle(),
         when);
  Expect(PlaceOf(ListWindow()) == List().GetBoundsRect(), when);
  Expect(PlaceOf(TreeWindow()) == Tree().GetBoundsRect(), when);
  Expect(PlaceOf(ListWindow()).Right == client.right, when);
  Expect(PlaceOf(ListWindow()).Bottom == PlaceOf(fHost.GetStatusLine()).Top, when);
  Expect(::IsWindowVisible(ListWindow()) && ::IsWindowVisible(TreeWindow()), when);
}

void TCheck::CheckTree() {
  const auto* shown = static_cast<const TPlaceNode*>(Tree().GetSelected());
  Expect(shown && shown->GetItem()->Equals(List().GetFolder(), ilcDisplay) && shown->GetParent(),
         "the tree shows where the folder is");
  if (!shown || !shown->GetParent()) return;
  TTreeNode* const place = shown->GetParent();
  place->MakeVisible();
  PostClick(TreeWindow(), place->DisplayRect(true).Center());
  fRunMessages();
  Expect(Tree().GetSelected() == place, "a click selects a place");
  Expect(List().GetFolder()->Equals(static_cast<TPlaceNode*>(place)->GetItem(), ilcDisplay),
         "the list follows the tree");
}

void TCheck::CheckKeys() {
  ::SetFocus(ListWindow());
  for (const std::uint16_t key : {vkHome, vkDown, vkUp}) PostKey(ListWindow(), key);
  fRunMessages();
  Expect(List().GetSelected() == List().Items()[0] && List().GetSelCount() == 1,
         "keys move the selection");
  wchar_t text[64] = L"";
  ::GetWindowTextW(fHost.GetStatusLine(), text, 64);
  Expect(FromW(text) == u"1 selected", "the program hears of the selection");
}

void TCheck::CheckHeader() {
  const HWND header = List().GetHeaderHandle();
  const TPoint name(List().Columns()[0]->GetWidth() / 2, List().GetHeaderRect().Height() / 2);
  const auto mark = List().Columns()[0]->GetSortMark();
  PostClick(header, name);
  fRunMessages();
  Expect(List().Columns()[0]->GetSortMark() != mark, "a click on a column turns the order");
}

void TCheck::CheckDoubleClick() {
  TListItem* const row = FolderRow();
  Expect(row != nullptr, "the folder has folders");
  if (!row) return;
  row->MakeVisible(false);
  const Ref<IItemIdList> folder = List().AbsoluteOf(static_cast<const TFolderRow&>(*row));
  PostDoubleClick(ListWindow(), row->DisplayRect(drLabel).Center());
  fRunMessages();
  Expect(List().GetFolder()->Equals(folder, ilcDisplay), "a double click opens a folder");
  Expect(Tree().GetSelected() != nullptr, "the tree follows the list");
}

void TCheck::CheckQueue() {
  bool ran = false;
  TThread::ForceQueue(nullptr, [&] { ran = true; });
  fRunMessages();
  Expect(ran, "what is queued for the main thread arrives in a loop of others");
}

void TCheck::CheckExchange(const TString& folder) {
  const int children = CountChildren();
  const HWND former = ListWindow();
  fHost.HideFolder();
  fRunMessages();
  Expect(!::IsWindow(former) && CountChildren() == 1, "the controls leave the window");
  fHost.ShowFolder(folder);
  CheckPlaces("new controls in the same window");
  Expect(CountChildren() == children, "the same number of windows as before");
}

void TCheck::CheckEndOfWindow() {
  const int rows = List().Items().GetCount();
  ::DestroyWindow(fHost.GetHandle());
  fRunMessages();
  Expect(fHost.GetHandle() == nullptr, "the window has gone");
  Expect(!List().HandleAllocated() && !Tree().HandleAllocated(), "the controls without windows");
  Expect(List().Items().GetCount() == rows && rows > 0, "the controls keep what they hold");
}

bool TCheck::Run(const TString& folder) {
  CheckPlaces("the window as it opens");
  CheckTree();
  ::SetWindowPos(fHost.GetHandle(), nullptr, 0, 0, 900, 500, SWP_NOMOVE | SWP_NOZORDER);
  CheckPlaces("a larger window");
  ::SetWindowPos(fHost.GetHandle(), nullptr, 0, 0, 500, 300, SWP_NOMOVE | SWP_NOZORDER);
  CheckPlaces("a smaller window");
  fHost.HideFolder();
  fHost.ShowFolder(folder);
  CheckKeys();
  CheckHeader();
  CheckDoubleClick();
  CheckQueue();
  CheckExchange(folder);
  CheckEndOfWindow();
  return fPassed;
}

}  // namespace

bool CheckHost(THostWindow& host, const TString& folder, void (*runMessages)()) {
  return TCheck(host, runMessages).Run(folder);
}
