// A hundred thousand rows: no step that takes longer than its share.
#include <chrono>

#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using TClock = std::chrono::steady_clock;

class ManyRows : public TListTest {
 protected:
  /// Runs a step. A quadratic one would take minutes.
  void Step(const char* what, const std::function<void()>& step) {
    constexpr double limit = 8;  // seconds, for slow machines and sanitizers
    const TClock::time_point start = TClock::now();
    step();
    screen->Drain();
    screen->Paint();
    const double seconds = std::chrono::duration<double>(TClock::now() - start).count();
    // The system's list is measured by the benchmark of rows.
    if (!screen->IsNative()) {
      EXPECT_LT(seconds, limit) << what;
    }
    RecordProperty(what, std::to_string(seconds));
  }
};

TEST_F(ManyRows, FilledSortedSelectedScrolledHalvedCleared) {
  const int count = screen->IsNative() ? 1'000 : 100'000;
  list->SetViewStyle(vsReport);
  list->AddColumns({150, 80});
  Show();
  list->SetFocus();
  Step("fill", [&] { list->Fill(count, u"file "); });
  EXPECT_EQ(screen->CountRows(*list), count);
  list->TextRequests = 0;
  Step("sort", [&] {
    list->CustomSort(
        [](TListItem* a, TListItem* b, LPARAM) { return b->GetIndex() - a->GetIndex(); }, 0);
  });
  EXPECT_EQ(list->Row(0)->GetCaption(), u"file " + IntToStr(count - 1));
  Step("select all", [&] { list->SelectAll(); });
  EXPECT_EQ(list->GetSelCount(), count);
  list->Take();
  Step("to the end", [&] { list->Row(count - 1)->MakeVisible(false); });
  ExpectShown(*list);
  Step("one alone", [&] { screen->Click(*list, list->At(count - 3)); });
  EXPECT_EQ(list->GetSelCount(), 1);
  Step("all to the top", [&] { Press(vkHome, {ssShift}); });
  EXPECT_EQ(list->GetSelCount(), count - 2);
  Step("none", [&] { list->ClearSelection(); });
  list->Take();
  Step("delete half", [&] {
    int number = 0;
    list->Items().DeleteIf([&](TListItem&) { return ++number % 2 == 0; });
  });
  EXPECT_EQ(screen->CountRows(*list), count / 2);
  ExpectShown(*list);
  Step("add at the front", [&] {
    for (int i = 0; i < 200; ++i) list->Items().Insert(0)->SetCaption(u"new");
  });
  ExpectShown(*list);
  Step("selected rows go", [&] {
    for (int i = 0; i < count / 50; ++i) list->Row(i * 2)->SetSelected(true);
    list->DeleteSelected();
  });
  EXPECT_EQ(screen->CountRows(*list), count / 2 + 200 - count / 50);
  Step("a new window", [&] { list->RecreateWnd(); });
  Step("clear", [&] { list->Items().Clear(); });
  EXPECT_EQ(screen->CountRows(*list), 0);
  if (!screen->IsNative()) {
    EXPECT_LT(list->TextRequests, 2000);
  }
}

TEST_F(ManyRows, RowByRowIsNotQuadratic) {
  ShowReport(0);
  const int count = screen->IsNative() ? 200 : 3000;
  // Without a bracket, as simple programs do it.
  Step("add", [&] {
    for (int i = 0; i < count; ++i) list->AddRow(u"row");
  });
  Step("select", [&] {
    for (int i = 0; i < count; ++i) list->Row(i)->SetSelected(true);
  });
  Step("delete", [&] {
    while (list->Items().GetCount() > 0) list->Items().Delete(list->Items().GetCount() - 1);
  });
  EXPECT_EQ(screen->CountRows(*list), 0);
}

class ManyNodes : public TTreeTest {};

TEST_F(ManyNodes, AddedSortedAndDeleted) {
  const int count = screen->IsNative() ? 2'000 : 10'000;
  Show();
  const TClock::time_point start = TClock::now();
  tree->Items().BeginUpdate();
  TTreeNode* const root = tree->Items().Add(nullptr, u"root");
  for (int i = 0; i < count; ++i) tree->Items().AddChild(root, u"node " + IntToStr(i));
  root->Expand(false);
  tree->Items().EndUpdate();
  screen->Paint();
  tree->CustomSort(
      [](TTreeNode* a, TTreeNode* b, LPARAM) {
        return b->GetText() < a->GetText() ? -1 : a->GetText() < b->GetText() ? 1 : 0;
      },
      0);
  EXPECT_EQ(root->GetFirstChild()->GetText(),
            u"node 9" + TString(IntToStr(count).size() - 2, u'9'));
  root->GetLastChild()->MakeVisible();
  ExpectShown(*tree);
  tree->Items().BeginUpdate();
  while (root->GetCount() > 100) root->GetFirstChild()->Delete();
  tree->Items().EndUpdate();
  ExpectShown(*tree);
  tree->Items().Clear();
  const double seconds = std::chrono::duration<double>(TClock::now() - start).count();
  if (!screen->IsNative()) {
    EXPECT_LT(seconds, 20);
  }
  RecordProperty("seconds", std::to_string(seconds));
}

}  // namespace
}  // namespace oak::tests
