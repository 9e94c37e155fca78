// Edit, memo, rich edit.
#include <algorithm>
#include <utility>

#include "oak/framework/ControlScopes.h"
#include "oak/framework/Encoding.h"
#include "oak/framework/Events.h"
#include "oak/framework/FileContent.h"
#include "oak/framework/RichText.h"
#include "oak/framework/StdCtrls.h"

namespace oak {
namespace {

constexpr int DefaultEditWidth = 121;
constexpr int DefaultEditHeight = 23;
constexpr int DefaultMemoHeight = 89;

bool IsArrow(std::uint16_t key) { return key >= vkLeft && key <= vkDown; }

}  // namespace

// --- TCustomEdit -----------------------------------------------------------------
TCustomEdit::TCustomEdit(TComponent* owner) : TWinControl(owner) {
  SetTabStop(true);
  SetColor(clWindow);
  SetBorderStyle(bsSingle);
  TWinControl::SetBounds(0, 0, DefaultEditWidth, DefaultEditHeight);
}

TCustomEdit::~TCustomEdit() { BeginDestroy(); }

std::unique_ptr<IControlPeer> TCustomEdit::CreatePeer() {
  std::unique_ptr<IEditPeer> peer = WidgetSet().CreateEdit(*this);
  fEditPeer = peer.get();
  return peer;
}

void TCustomEdit::CreateWnd() {
  TWinControl::CreateWnd();
  fEditPeer->SetSelection(fSelStart, fSelStart + fSelLength);
}

void TCustomEdit::DestroyWnd() {
  fSelStart = GetSelStart();
  fSelLength = GetSelLength();
  fEditPeer = nullptr;
  TWinControl::DestroyWnd();
}

void TCustomEdit::SetKind(bool multiLine, bool rich) {
  fMultiLine = multiLine;
  fRich = rich;
}

void TCustomEdit::SetText(const TString& value) {
  fModified = false;
  if (value == GetText()) return;
  fSelStart = fSelLength = 0;
  const TLifeGuard guard = GetLifeGuard();
  TWinControl::SetText(value);
  if (guard.IsAlive()) Change();
}

void TCustomEdit::HandleTextChanged(const TString& text) {
  if (IsDestroying() || text == GetText()) return;
  RunFenced(*this, [&] {
    TControl::SetText(text);
    fModified = true;
    Change();
  });
}

void TCustomEdit::Change() { FireEvent(OnChange, this); }

int TCustomEdit::GetSelStart() const {
  int start = fSelStart, end = 0;
  if (fEditPeer) fEditPeer->GetSelection(&start, &end);
  return start;
}

int TCustomEdit::GetSelLength() const {
  if (!fEditPeer) return fSelLength;
  int start = 0, end = 0;
  fEditPeer->GetSelection(&start, &end);
  return end - start;
}

void TCustomEdit::SelectText(int start, int length) {
  const int size = static_cast<int>(GetText().size());
  fSelStart = std::clamp(start, 0, size);
  fSelLength = std::clamp(length, 0, size - fSelStart);
  if (fEditPeer) fEditPeer->SetSelection(fSelStart, fSelStart + fSelLength);
}

void TCustomEdit::SelectAll() { SelectText(0, static_cast<int>(GetText().size())); }

TString TCustomEdit::GetSelText() const {
  const TString text = GetText();
  const auto start = std::min(static_cast<std::size_t>(GetSelStart()), text.size());
  return text.substr(start, static_cast<std::size_t>(GetSelLength()));
}

void TCustomEdit::SetReadOnly(bool value) {
  if (value == fReadOnly) return;
  fReadOnly = value;
  if (fEditPeer) fEditPeer->StyleChanged();
}

void TCustomEdit::SetMaxLength(int value) {
  if (value == fMaxLength) return;
  fMaxLength = std::max(value, 0);
  if (fEditPeer) fEditPeer->StyleChanged();
}

void TCustomEdit::SetTextHint(TString value) {
  fTextHint = std::move(value);
  if (fEditPeer) fEditPeer->StyleChanged();
}

bool TCustomEdit::WantsKey(std::uint16_t key, TShiftState shift) {
  return IsArrow(key) || (fMultiLine && key == vkReturn && !fReadOnly) ||
         TWinControl::WantsKey(key, shift);
}

TMemo::TMemo(TComponent* owner) : TCustomEdit(owner) {
  SetKind(true, false);
  SetHeight(DefaultMemoHeight);
}

// --- TRichEdit --------------------------------------------------------------------
TRichEdit::TRichEdit(TComponent* owner) : TCustomEdit(owner) {
  SetKind(true, true);
  SetHeight(DefaultMemoHeight);
}

void TRichEdit::CreateWnd() {
  TCustomEdit::CreateWnd();
  if (!fFormatted.empty()) ShowFormats();
}

// Gives the formatted text to the window, if there is one that can show it.
void TRichEdit::ShowFormats() {
  const TMemberScope loading(*this, fLoading, true);
  if (!GetEditPeer() || !GetEditPeer()->LoadRichText(fFormatted)) return;
  const TLifeGuard guard = GetLifeGuard();
  HandleTextChanged(GetEditPeer()->GetText());
  if (guard.IsAlive()) SetModified(false);
}

void TRichEdit::LoadFromFile(const TString& path) {
  const std::string bytes = ReadFileContent(path);
  LoadFromBytes({bytes.begin(), bytes.end()});
}

void TRichEdit::LoadFromBytes(const std::vector<std::uint8_t>& data) {
  const std::string_view bytes(reinterpret_cast<const char*>(data.data()), data.size());
  TString text;
  fFormatted.clear();
  if (PlainTextOfRtf(data, &text)) {
    const TLifeGuard guard = GetLifeGuard();
    SetText(text);
    if (!guard.IsAlive()) return;
    fFormatted = data;
    ShowFormats();
  } else {
    TEncoding encoding;
    const std::size_t mark = TEncoding::Detect(bytes, encoding);
    SetText(encoding.GetString(bytes.substr(mark)));
  }
}

void TRichEdit::Change() {
  if (!fLoading) fFormatted.clear();
  TCustomEdit::Change();
}

}  // namespace oak
