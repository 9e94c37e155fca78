#include "tests/controls/ControlsFixture.h"

#include <algorithm>

namespace oak::tests {

void PrintTo(const TShownImages& images, std::ostream* out) {
  *out << " image " << images.Image;
  if (images.State >= 0) *out << " state " << images.State;
  if (images.Overlay >= 0) *out << " overlay " << images.Overlay;
  if (images.Cut) *out << " cut";
}

void PrintTo(const TShownRow& row, std::ostream* out) {
  if (row.Checked) *out << "[x]";
  if (row.Marked) *out << "*";
  if (row.Focused) *out << "!";
  for (const TString& cell : row.Cells) *out << "|" << ToUtf8(cell);
  PrintTo(row.Images, out);
}

void PrintTo(const TShownNode& node, std::ostream* out) {
  *out << std::string(static_cast<std::size_t>(std::max(0, node.Level)), '.');
  if (node.HasButton) *out << (node.Expanded ? "v" : ">");
  *out << ToUtf8(node.Text) << (node.Marked ? "*" : "");
  PrintTo(node.Images, out);
}

void PrintTo(const TShownColumn& column, std::ostream* out) {
  *out << ToUtf8(column.Caption) << ":" << column.Width;
  if (column.Mark != TListSortMark::None)
    *out << (column.Mark == TListSortMark::Up ? " up" : " down");
}

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

bool TListUnderTest::Note(const std::string& event, bool log) {
  if (log) Log.push_back(event);
  if (!OnEvent) return true;
  const TLifeGuard guard = GetLifeGuard();
  const auto hook = OnEvent;
  hook(event);
  return guard.IsAlive();
}

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

void TListUnderTest::DoSelectItem(TListItem* item, bool selected) {
  const std::string index = std::to_string(item->GetIndex());
  if (NoteOf(item, (selected ? "select " : "deselect ") + index))
    TCustomListView::DoSelectItem(item, selected);
}
void TListUnderTest::Change(TListItem* item, TItemChange change) {
  if (NoteOf(item, "change", false)) TCustomListView::Change(item, change);
}
void TListUnderTest::MouseDown(TMouseButton button, TShiftState shift, int x, int y) {
  if (Note("mouse down")) TCustomListView::MouseDown(button, shift, x, y);
}
void TListUnderTest::MouseUp(TMouseButton button, TShiftState shift, int x, int y) {
  if (Note("mouse up")) TCustomListView::MouseUp(button, shift, x, y);
}
void TListUnderTest::Click() {
  if (Note("click")) TCustomListView::Click();
}
void TListUnderTest::DblClick() {
  if (Note("double click")) TCustomListView::DblClick();
}
void TListUnderTest::KeyDown(std::uint16_t& key, TShiftState shift) {
  if (Note("key", false)) TCustomListView::KeyDown(key, shift);
}
void TListUnderTest::KeyPress(char16_t& key) {
  if (Note("char", false)) TCustomListView::KeyPress(key);
}
void TListUnderTest::DoBeginDrag(TMouseButton button) {
  if (Note(button == mbLeft ? "drag" : "drag right") && OnBeginDrag) OnBeginDrag(button);
}
void TListUnderTest::ColClick(TListColumn* column) {
  if (Note("column click " + std::to_string(column->GetIndex()))) TCustomListView::ColClick(column);
}
void TListUnderTest::ColRightClick(TListColumn* column, TPoint point) {
  if (Note("column right " + (column ? std::to_string(column->GetIndex()) : std::string("none"))))
    TCustomListView::ColRightClick(column, point);
}
void TListUnderTest::ColResized(int column, bool finished) {
  if (Note("column size " + std::to_string(column) + (finished ? " end" : ""), finished))
    TCustomListView::ColResized(column, finished);
}
bool TListUnderTest::CanDragColumn(int from, int to, int x) {
  return Note("column drag?", false) && TCustomListView::CanDragColumn(from, to, x);
}
void TListUnderTest::ColDragged(int from, int to) {
  if (Note("column drag " + std::to_string(from) + " " + std::to_string(to)))
    TCustomListView::ColDragged(from, to);
}
bool TListUnderTest::CanEdit(TListItem* item) {
  return NoteOf(item, "edit?") && TCustomListView::CanEdit(item);
}
void TListUnderTest::Edit(TListItem* item, const TString& text) {
  if (NoteOf(item, "edit " + ToUtf8(text))) TCustomListView::Edit(item, text);
}
void TListUnderTest::CancelEdit(TListItem* item) {
  if (NoteOf(item, "edit cancelled")) TCustomListView::CancelEdit(item);
}
void TListUnderTest::GetImageIndex(TListItem* item) {
  ++ImageRequests;
  if (NoteOf(item, "image", false)) TCustomListView::GetImageIndex(item);
}
TString TListUnderTest::GetColumnText(TListItem* item, int column) {
  ++TextRequests;
  return NoteOf(item, "text", false) ? TCustomListView::GetColumnText(item, column) : TString();
}
int TListUnderTest::IncrementalSearch(const TString& text, int start) {
  return Note("search " + ToUtf8(text)) ? TCustomListView::IncrementalSearch(text, start) : -1;
}
bool TListUnderTest::IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage) {
  return DrawsAll || TCustomListView::IsCustomDrawn(target, stage);
}
bool TListUnderTest::CustomDraw(TCanvas& canvas, const TRect& rect, TCustomDrawStage stage) {
  return Note(stage == cdPrePaint ? "draw all" : "drawn all", false) &&
         TCustomListView::CustomDraw(canvas, rect, stage);
}
bool TListUnderTest::CustomDrawItem(TCanvas& canvas, TListItem* item, TCustomDrawState state,
                                    TCustomDrawStage stage) {
  LastState = state;
  return NoteOf(item, stage == cdPrePaint ? "draw row" : "drawn row", false) &&
         TCustomListView::CustomDrawItem(canvas, item, state, stage);
}
bool TListUnderTest::CustomDrawSubItem(TCanvas& canvas, TListItem* item, int column,
                                       TCustomDrawState state, TCustomDrawStage stage) {
  return NoteOf(item, stage == cdPrePaint ? "draw cell" : "drawn cell", false) &&
         TCustomListView::CustomDrawSubItem(canvas, item, column, state, stage);
}
void TListUnderTest::WMContextMenu(TPoint screen) {
  if (Note("menu")) TCustomListView::WMContextMenu(screen);
}
void TListUnderTest::DoEnter() {
  if (Note("enter")) TCustomListView::DoEnter();
}
void TListUnderTest::DoExit() {
  if (Note("exit")) TCustomListView::DoExit();
}
void TListUnderTest::Resize() {
  if (Note("resize", false)) TCustomListView::Resize();
}

// --- the tree -----------------------------------------------------------------------------------

bool TTreeUnderTest::Note(const std::string& event, bool log) {
  if (log) Log.push_back(event);
  if (!OnEvent) return true;
  const TLifeGuard guard = GetLifeGuard();
  const auto hook = OnEvent;
  hook(event);
  return guard.IsAlive();
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

namespace {
std::string Of(const TTreeNode* node) {
  return node ? " " + ToUtf8(node->GetText()) : std::string(" none");
}
}  // namespace

bool TTreeUnderTest::CanChange(TTreeNode* node) {
  return Note("select?" + Of(node)) && TCustomTreeView::CanChange(node);
}
void TTreeUnderTest::Change(TTreeNode* node) {
  if (Note("selected" + Of(node))) TCustomTreeView::Change(node);
}
bool TTreeUnderTest::CanExpand(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  return Note("expand?" + Of(node)) && watch.Exists() && TCustomTreeView::CanExpand(node);
}
void TTreeUnderTest::Expanded(TTreeNode* node) {
  if (Note("expanded" + Of(node))) TCustomTreeView::Expanded(node);
}
bool TTreeUnderTest::CanCollapse(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  return Note("collapse?" + Of(node)) && watch.Exists() && TCustomTreeView::CanCollapse(node);
}
void TTreeUnderTest::Collapsed(TTreeNode* node) {
  if (Note("collapsed" + Of(node))) TCustomTreeView::Collapsed(node);
}
bool TTreeUnderTest::CanEdit(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  return Note("edit?") && watch.Exists() && TCustomTreeView::CanEdit(node);
}
void TTreeUnderTest::Edit(TTreeNode* node, const TString& text) {
  const TTreeNodeWatch watch(*this, node);
  if (Note("edit " + ToUtf8(text)) && watch.Exists()) TCustomTreeView::Edit(node, text);
}
void TTreeUnderTest::CancelEdit(TTreeNode* node) {
  if (Note("edit cancelled")) TCustomTreeView::CancelEdit(node);
}
void TTreeUnderTest::Delete(TTreeNode* node) {
  if (Note("delete" + Of(node), false)) TCustomTreeView::Delete(node);
}
void TTreeUnderTest::Added(TTreeNode* node) {
  if (Note("add", false)) TCustomTreeView::Added(node);
}
void TTreeUnderTest::GetImageIndex(TTreeNode* node) {
  const TTreeNodeWatch watch(*this, node);
  if (Note("image", false) && watch.Exists()) TCustomTreeView::GetImageIndex(node);
}
void TTreeUnderTest::DoBeginDrag(TTreeNode* node, TMouseButton button) {
  const TTreeNodeWatch watch(*this, node);
  if (Note((button == mbLeft ? "drag" : "drag right") + Of(node)) && watch.Exists() && OnBeginDrag)
    OnBeginDrag(node, button);
}
bool TTreeUnderTest::IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage) {
  return DrawsAll || TCustomTreeView::IsCustomDrawn(target, stage);
}
bool TTreeUnderTest::CustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                                    TCustomDrawStage stage) {
  const TTreeNodeWatch watch(*this, node);
  return Note(stage == cdPrePaint ? "draw row" : "drawn row", false) && watch.Exists() &&
         TCustomTreeView::CustomDrawItem(canvas, node, state, stage);
}
void TTreeUnderTest::MouseDown(TMouseButton button, TShiftState shift, int x, int y) {
  if (Note("mouse down")) TCustomTreeView::MouseDown(button, shift, x, y);
}
void TTreeUnderTest::MouseUp(TMouseButton button, TShiftState shift, int x, int y) {
  if (Note("mouse up")) TCustomTreeView::MouseUp(button, shift, x, y);
}
void TTreeUnderTest::Click() {
  if (Note("click")) TCustomTreeView::Click();
}
void TTreeUnderTest::DblClick() {
  if (Note("double click")) TCustomTreeView::DblClick();
}
void TTreeUnderTest::KeyDown(std::uint16_t& key, TShiftState shift) {
  if (Note("key", false)) TCustomTreeView::KeyDown(key, shift);
}
void TTreeUnderTest::WMContextMenu(TPoint screen) {
  if (Note("menu")) TCustomTreeView::WMContextMenu(screen);
}
void TTreeUnderTest::DoEnter() {
  if (Note("enter")) TCustomTreeView::DoEnter();
}
void TTreeUnderTest::DoExit() {
  if (Note("exit")) TCustomTreeView::DoExit();
}

// --- fixtures -----------------------------------------------------------------------------------

TControlsTest::TControlsTest() {
  form->SetPosition(poDesigned);
  form->SetBounds(60, 40, 560, 380);
}

TControlsTest::~TControlsTest() {
  form.reset();
  screen->Pump();
}

void TControlsTest::Show() {
  form->Show();
  screen->Pump();
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
  screen->Pump();
  list->Take();
}

void TListTest::ShowStyle(TViewStyle style, int rows) {
  list->SetViewStyle(style);
  list->Fill(rows);
  Show();
  list->SetFocus();
  screen->Pump();
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

void TTreeTest::Build(std::initializer_list<TStringView> lines) {
  std::vector<TTreeNode*> path;
  for (const TStringView line : lines) {
    const std::size_t level = line.find_first_not_of(u' ');
    path.resize(level);
    TTreeNode* const parent = level ? path[level - 1] : nullptr;
    path.push_back(tree->Items().AddChild(parent, TString(line.substr(level))));
  }
}

}  // namespace oak::tests
