#include "tests/controls/ControlsFixture.h"

#include <algorithm>

namespace oak::tests {

std::unique_ptr<TImageList> MakeImages(int size, int count) {
  auto images = std::make_unique<TImageList>(nullptr, size, size);
  constexpr TPixel colors[] = {0xFFD04030, 0xFF30A040, 0xFF3060C0, 0xFFC0A020};
  for (int i = 0; i < count; ++i) {
    TBitmap bitmap(size, size);
    for (int y = 0; y < size; ++y)
      for (int x = 0; x < size; ++x)
        if (x > 1 && y > 1 && x < size - 2 && y < size - 2) bitmap.ScanLine(y)[x] = colors[i % 4];
    images->Add(bitmap);
  }
  return images;
}

// --- the list -----------------------------------------------------------------------------------

bool TListUnderTest::NoteOf(const TListItem* item, const std::string& event, bool log) {
  const bool hooked = OnEvent != nullptr;
  if (!Note(event, log)) return false;
  if (!hooked) return true;
  for (const TListItem* const row : Items())
    if (row == item) return true;
  return false;
}

TListItem* TListUnderTest::AddRow(TString caption, std::vector<TString> texts) {
  TListItem* const item = Items().Add();
  item->SetCaption(std::move(caption));
  for (TString& text : texts) item->GetSubItems().Add(std::move(text));
  return item;
}

void TListUnderTest::Fill(int count, TStringView prefix) {
  Items().BeginUpdate();
  for (int i = 0; i < count; ++i) {
    TListItem* const item = AddRow(TString(prefix) + IntToStr(i), {u"size " + IntToStr(i), u"x"});
    item->SetImageIndex(i % 3);
  }
  Items().EndUpdate();
}

void TListUnderTest::AddColumns(std::initializer_list<int> widths) {
  Columns().BeginUpdate();
  for (const int width : widths) {
    TListColumn* const column = Columns().Add();
    column->SetCaption(u"Col" + IntToStr(column->GetIndex()));
    column->SetWidth(width);
  }
  Columns().EndUpdate();
}

std::string TListUnderTest::Selection() {
  std::string text;
  for (const TListItem* const item : Items()) {
    const std::string index = std::to_string(item->GetIndex());
    if (item->GetFocused())
      text += (item->GetSelected() ? " [" : " [-") + index + "]";
    else if (item->GetSelected())
      text += " " + index;
  }
  return text.empty() ? text : text.substr(1);
}

// --- the tree -----------------------------------------------------------------------------------

void TTreeUnderTest::Build(std::initializer_list<TStringView> lines) {
  std::vector<TTreeNode*> path;
  for (const TStringView line : lines) {
    const std::size_t level = line.find_first_not_of(u' ');
    path.resize(level);
    TTreeNode* const parent = level ? path[level - 1] : nullptr;
    path.push_back(Items().AddChild(parent, TString(line.substr(level))));
  }
}

std::string TTreeUnderTest::ShapeOf(TTreeNode* parent) const {
  std::string text;
  int count = 0;
  TTreeNode* last = nullptr;
  TTreeNode* node = parent ? parent->GetFirstChild() : Items().GetFirstNode();
  for (; node; node = node->GetNextSibling(), ++count) {
    EXPECT_EQ(node->GetPrevSibling(), last);
    EXPECT_EQ(node->GetParent(), parent);
    EXPECT_EQ(node->GetIndex(), count);
    text += (text.empty() ? "" : " ") + ToUtf8(node->GetText());
    if (node->GetFirstChild()) text += "(" + ShapeOf(node) + ")";
    last = node;
  }
  EXPECT_EQ(parent ? parent->GetLastChild() : Items().GetLastNode(), last);
  EXPECT_EQ(parent ? parent->GetCount() : count, count);
  return text;
}

TTreeNode* TTreeUnderTest::Node(TStringView text) const {
  TTreeNode* node = Items().GetFirstNode();
  while (node && node->GetText() != text) node = node->GetNext();
  return node;
}

TTreeNode* TTreeUnderTest::Find(TStringView path) const {
  TTreeNode* node = Items().GetFirstNode();
  while (node) {
    const std::size_t end = path.find(u'|');
    const TStringView text = path.substr(0, end);
    while (node && node->GetText() != text) node = node->GetNextSibling();
    if (!node || end == TStringView::npos) return node;
    path.remove_prefix(end + 1);
    node = node->GetFirstChild();
  }
  return nullptr;
}

TPoint TTreeUnderTest::AtButton(TTreeNode* node) const {
  const TRect text = node->DisplayRect(true);
  const int images = GetImages() ? GetImages()->GetWidth() + 3 : 0;
  return {text.Left - images - GetIndent() / 2, text.Center().Y};
}

// --- fixtures -----------------------------------------------------------------------------------

TControlsTest::TControlsTest() {
  form->SetPosition(poDesigned);
  form->SetBounds(60, 40, 560, 380);
}

TControlsTest::~TControlsTest() {
  form.reset();
  screen->Drain();
}

void TControlsTest::Show() {
  form->Show();
  screen->Drain();
  screen->Paint();
}

// What is too long for its place is cut off on the screen.
TString TControlsTest::AsShown(const TString& wanted, const TString& shown) const {
  constexpr TStringView dots = u"...";
  if (screen->IsNative() || !EndsWith(shown, dots)) return wanted;
  const TStringView rest = TStringView(shown).substr(0, shown.size() - dots.size());
  return StartsWith(wanted, rest) ? shown : wanted;
}

TShownRow TControlsTest::WantedRow(TCustomListView& list, int index, const TShownRow& shown) {
  TListItem& item = *list.Items()[index];
  const bool focused = screen->Focused() == &list;
  TShownRow row;
  row.Marked =
      (item.GetSelected() && (focused || !list.GetHideSelection())) || item.GetDropTarget();
  row.Focused = item.GetFocused() && focused;
  row.Checked = list.GetCheckboxes() && !list.GetStateImages() && item.GetChecked();
  if (list.GetStateImages()) row.Images.State = item.GetStateIndex();
  if (list.GetViewStyle() == vsIcon ? list.GetLargeImages() : list.GetSmallImages())
    row.Images.Image = item.GetImageIndex();
  if (row.Images.Image >= 0) {
    row.Images.Overlay = item.GetOverlayIndex();
    row.Images.Cut = item.GetCut();
  }
  if (list.GetViewStyle() != vsReport) {
    row.Cells.push_back(AsShown(item.GetCaption(), shown.Cells.at(0)));
    return row;
  }
  for (int i = 0; i < list.Columns().GetCount(); ++i) {
    const TListColumn& column = *list.Columns()[i];
    const int text = column.GetTextIndex();
    TString cell = text == 0 ? item.GetCaption() : item.GetSubItems()[text - 1];
    if (column.GetWidth() == 0 && !screen->IsNative()) cell.clear();
    row.Cells.push_back(AsShown(cell, shown.Cells.at(static_cast<std::size_t>(i))));
  }
  return row;
}

std::vector<TShownColumn> TControlsTest::WantedColumns(TCustomListView& list,
                                                       const std::vector<TShownColumn>& shown) {
  std::vector<TShownColumn> columns;
  for (int i = 0; i < list.Columns().GetCount(); ++i) {
    const TListColumn& column = *list.Columns()[i];
    TShownColumn wanted;
    wanted.Width = column.GetWidth();
    if (column.GetWidth() > 0 || screen->IsNative()) {
      const auto place = static_cast<std::size_t>(i);
      wanted.Caption = place < shown.size() ? AsShown(column.GetCaption(), shown[place].Caption)
                                            : column.GetCaption();
      wanted.Mark = column.GetSortMark();
    }
    columns.push_back(std::move(wanted));
  }
  return columns;
}

void TControlsTest::ExpectShown(TCustomListView& list) {
  screen->Paint();
  ASSERT_EQ(screen->CountRows(list), list.Items().GetCount());
  std::vector<TShownRow> shown;
  std::vector<TShownRow> wanted;
  const TRect client = list.GetClientRect();
  const int top = list.GetHeaderRect().Bottom;
  const bool report = list.GetViewStyle() == vsReport;
  const TListItem* const first = report ? list.GetTopItem() : nullptr;
  for (int i = first ? first->GetIndex() : 0; i < list.Items().GetCount(); ++i) {
    const TRect rect = list.Items()[i]->DisplayRect(drBounds);
    if (report && rect.Bottom > client.Bottom) break;
    if (rect.Top < top || rect.Bottom > client.Bottom) continue;
    if (!report && (rect.Left < 0 || rect.Right > client.Right)) continue;
    shown.push_back(screen->RowOf(list, i));
    wanted.push_back(WantedRow(list, i, shown.back()));
  }
  EXPECT_EQ(shown, wanted);
  if (!report || !list.GetShowColumnHeaders()) return;
  const std::vector<TShownColumn> columns = screen->ColumnsOf(list);
  EXPECT_EQ(columns, WantedColumns(list, columns));
}

void TControlsTest::ExpectShown(TCustomTreeView& tree) {
  screen->Paint();
  const std::vector<TShownNode> shown = screen->NodesOf(tree);
  std::vector<TShownNode> wanted;
  const bool focused = screen->Focused() == &tree;
  for (TTreeNode* node = tree.GetTopItem(); node && wanted.size() < shown.size();
       node = node->GetNextVisible()) {
    TShownNode row;
    row.Text = node->GetText();
    row.Level = node->GetLevel();
    row.HasButton = tree.GetShowButtons() && node->GetHasChildren();
    row.Expanded = row.HasButton && node->GetExpanded() && node->GetFirstChild();
    row.Marked =
        (node->GetSelected() && (focused || !tree.GetHideSelection())) || node->GetDropTarget();
    if (tree.GetStateImages() && node->GetStateIndex() > 0)
      row.Images.State = node->GetStateIndex();
    if (tree.GetImages()) {
      const bool other = node->GetSelected() && node->GetSelectedIndex() >= 0;
      row.Images.Image = other ? node->GetSelectedIndex() : node->GetImageIndex();
    }
    if (row.Images.Image >= 0) {
      row.Images.Overlay = node->GetOverlayIndex();
      row.Images.Cut = node->GetCut();
    }
    wanted.push_back(std::move(row));
  }
  EXPECT_EQ(shown, wanted);
  // No row is missing at the end.
  int visible = 0;
  for (TTreeNode* node = tree.GetTopItem(); node; node = node->GetNextVisible()) ++visible;
  EXPECT_EQ(static_cast<int>(shown.size()), std::min(visible, tree.GetVisibleRowCount()));
}

TListTest::TListTest() {
  list->SetBounds(10, 10, 400, 240);
  list->SetSmallImages(smallImages.get());
  list->SetLargeImages(largeImages.get());
  list->SetParent(form.get());
}

TListTest::~TListTest() { form.reset(); }

void TListTest::ShowReport(int rows, std::initializer_list<int> widths) {
  list->SetViewStyle(vsReport);
  list->AddColumns(widths);
  list->Fill(rows);
  Show();
  list->SetFocus();
  screen->Drain();
  list->Take();
}

void TListTest::ShowStyle(TViewStyle style, int rows) {
  list->SetViewStyle(style);
  list->Fill(rows);
  Show();
  list->SetFocus();
  screen->Drain();
  list->Take();
}

TPoint TListTest::OnHeader(int column) {
  int left = list->GetHeaderRect().Left;
  for (int i = 0; i < column; ++i) left += list->Columns()[i]->GetWidth();
  return {left + list->Columns()[column]->GetWidth() / 2, list->GetHeaderRect().Center().Y};
}

TPoint TListTest::OnDivider(int column) {
  int right = list->GetHeaderRect().Left;
  for (int i = 0; i <= column; ++i) right += list->Columns()[i]->GetWidth();
  return {right - 1, list->GetHeaderRect().Center().Y};
}

TTreeTest::TTreeTest() {
  tree->SetBounds(10, 10, 300, 240);
  tree->SetImages(images.get());
  tree->SetParent(form.get());
}

TTreeTest::~TTreeTest() { form.reset(); }

}  // namespace oak::tests
