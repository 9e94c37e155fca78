#include "oak/framework/win32/EditPeer.h"

#include <richedit.h>

#include <algorithm>
#include <limits>

#include "oak/framework/TextMetrics.h"
#include "oak/framework/win32/PeerScopes.h"
#include "oak/framework/win32/Peers.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

/// Class of the newest rich edit control that the system has; null without one.
LPCWSTR RichEditClass() {
  static const LPCWSTR name = []() -> LPCWSTR {
    if (::LoadLibraryW(L"msftedit.dll")) return L"RICHEDIT50W";
    return ::LoadLibraryW(L"riched20.dll") ? L"RichEdit20W" : nullptr;
  }();
  return name;
}

/// Single line feeds are no line ends for the system's edit control.
TString WithCarriageReturns(const TString& text) {
  TString result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r')) result += u'\r';
    result += text[i];
  }
  return result;
}

/// A rich edit control counts a line end as one character, its text has two.
int RichPosition(const TString& text, int position) {
  const auto end =
      static_cast<std::size_t>(std::clamp<int>(position, 0, static_cast<int>(text.size())));
  return static_cast<int>(end) -
         static_cast<int>(
             std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), u'\n'));
}

int TextPosition(const TString& text, int richPosition) {
  int position = 0;
  for (int left = richPosition; left > 0 && position < static_cast<int>(text.size()); --left)
    position += text[static_cast<std::size_t>(position)] == u'\r' ? 2 : 1;
  return position;
}

/// Texts that a rich edit control would take for formats instead of showing them.
bool LooksFormatted(const TString& text) {
  return text.starts_with(u"{\\rtf") || text.starts_with(u"{\\urtf");
}

struct TByteSource {
  std::span<const std::uint8_t> Data;
  std::size_t Position = 0;
};

DWORD CALLBACK ReadBytes(DWORD_PTR cookie, LPBYTE buffer, LONG size, LONG* read) {
  auto& source = *reinterpret_cast<TByteSource*>(cookie);
  const std::size_t count =
      std::min<std::size_t>(static_cast<std::size_t>(size), source.Data.size() - source.Position);
  std::copy_n(source.Data.data() + source.Position, count, buffer);
  source.Position += count;
  *read = static_cast<LONG>(count);
  return 0;
}

}  // namespace

TEditPeer::TEditPeer(TCustomEdit& edit) : TWindowPeer(edit), fEdit(edit) {}

void TEditPeer::Create() {
  fRich = fEdit.IsRich() && RichEditClass();
  TWindowParams params = MakeParams();
  params.ClassName = fRich ? RichEditClass() : L"EDIT";
  // A rich edit control draws no edge of the theme; its thin line goes better with the others.
  if ((params.Style & WS_BORDER) && !fRich) {
    params.Style &= ~static_cast<DWORD>(WS_BORDER);
    params.ExStyle |= WS_EX_CLIENTEDGE;
  }
  if (fEdit.IsMultiLine())
    params.Style |= ES_MULTILINE | ES_AUTOVSCROLL | ES_WANTRETURN | WS_VSCROLL;
  else
    params.Style |= ES_AUTOHSCROLL;
  if (fEdit.GetReadOnly()) params.Style |= ES_READONLY;
  if (fEdit.IsMultiLine()) params.Text = WithCarriageReturns(params.Text);
  if (fRich && LooksFormatted(params.Text)) params.Text.clear();  // set later, as it stands
  // The selection stays marked only while the control has the keyboard, as users expect.
  CreateHandle(params);
}

void TEditPeer::Initialize() {
  if (fRich) {
    Send(EM_SETEVENTMASK, 0, ENM_CHANGE);
    ApplyRichColors();
  }
  StyleChanged();
  if (fRich && LooksFormatted(fEdit.GetText())) SetText(fEdit.GetText());
}

LPCWSTR TEditPeer::GetThemeName(bool dark) const {
  if (!dark) return nullptr;
  return fEdit.IsMultiLine() ? L"DarkMode_Explorer" : L"DarkMode_CFD";
}

void TEditPeer::SetText(const TString& text) {
  const TPeerFlag setting(fSettingText, *this);
  const TString lines = fEdit.IsMultiLine() ? WithCarriageReturns(text) : text;
  if (!fRich || !LooksFormatted(lines)) return TWindowPeer::SetText(lines);
  StreamIn({reinterpret_cast<const std::uint8_t*>(lines.data()), lines.size() * sizeof(char16_t)},
           SF_TEXT | SF_UNICODE);
}

void TEditPeer::SetFont(const TFont& font) {
  const TPeerFlag setting(fSettingText, *this);
  TWindowPeer::SetFont(font);
  if (fRich && !IsCreating()) ApplyRichColors();
  // The height of the line has changed.
  if (!fEdit.IsMultiLine()) FrameChanged();
}

void TEditPeer::ColorsChanged() {
  if (fRich) ApplyRichColors();
  TWindowPeer::ColorsChanged();
  ::RedrawWindow(GetHandle(), nullptr, nullptr, RDW_FRAME | RDW_INVALIDATE);
}

void TEditPeer::ApplyRichColors() {
  const TPeerFlag setting(fSettingText, *this);
  Send(EM_SETBKGNDCOLOR, 0, static_cast<LPARAM>(GetBackColor()));
  CHARFORMAT2W format{};
  format.cbSize = sizeof format;
  format.dwMask = CFM_COLOR;
  format.crTextColor = GetTextColor();
  // What is typed from now on; texts with colours of their own keep them.
  Send(EM_SETCHARFORMAT, SCF_DEFAULT, reinterpret_cast<LPARAM>(&format));
}

TString TEditPeer::GetText() const {
  const int length = ::GetWindowTextLengthW(GetHandle());
  TString text(static_cast<std::size_t>(length) + 1, u'\0');
  const int copied = ::GetWindowTextW(GetHandle(), WBuffer(text), length + 1);
  text.resize(static_cast<std::size_t>(copied));
  return text;
}

void TEditPeer::GetSelection(int* start, int* end) const {
  DWORD first = 0;
  DWORD last = 0;
  ::SendMessageW(GetHandle(), EM_GETSEL, reinterpret_cast<WPARAM>(&first),
                 reinterpret_cast<LPARAM>(&last));
  const TString text = fRich ? GetText() : TString();
  const auto place = [&](DWORD position) {
    return fRich ? TextPosition(text, static_cast<int>(position)) : static_cast<int>(position);
  };
  if (start) *start = place(first);
  if (end) *end = place(last);
}

void TEditPeer::SetSelection(int start, int end) {
  if (fRich) {
    const TString text = GetText();
    start = RichPosition(text, start);
    end = RichPosition(text, end);
  }
  Send(EM_SETSEL, static_cast<WPARAM>(start), end);
  Send(EM_SCROLLCARET, 0, 0);
}

void TEditPeer::StyleChanged() {
  Send(EM_SETREADONLY, fEdit.GetReadOnly(), 0);
  const int limit = fEdit.GetMaxLength();
  constexpr int most = std::numeric_limits<int>::max() - 1;
  if (fRich)
    Send(EM_EXLIMITTEXT, 0, limit > 0 ? limit : most);
  else
    Send(EM_SETLIMITTEXT, static_cast<WPARAM>(limit > 0 ? limit : most), 0);
  if (!fEdit.IsMultiLine())
    Send(EM_SETCUEBANNER, FALSE, reinterpret_cast<LPARAM>(W(fEdit.GetTextHint())));
}

bool TEditPeer::LoadRichText(const std::vector<std::uint8_t>& data) {
  if (!fRich) return false;
  const TPeerFlag setting(fSettingText, *this);
  return StreamIn(data, SF_RTF);
}

bool TEditPeer::StreamIn(std::span<const std::uint8_t> data, WPARAM format) {
  TByteSource source{data};
  EDITSTREAM stream{};
  stream.dwCookie = reinterpret_cast<DWORD_PTR>(&source);
  stream.pfnCallback = reinterpret_cast<EDITSTREAMCALLBACK>(&ReadBytes);
  Send(EM_STREAMIN, format, reinterpret_cast<LPARAM>(&stream));
  return stream.dwError == 0;
}

void TEditPeer::HandleCommand(WORD code) {
  if (code == EN_CHANGE && !fSettingText && !IsCreating()) fEdit.HandleTextChanged(GetText());
}

/// A line stands in the middle of its field; the system would put it at the top. What is left above
/// and below counts as frame.
void TEditPeer::NarrowToLine(RECT& client) {
  const int line = MetricsOf(fEdit.GetFont()).Height;
  const int height = static_cast<int>(client.bottom - client.top);
  fAbove = std::max((height - line) / 2, 0);
  fBelow = std::max(height - line - fAbove, 0);
  client.top += fAbove;
  client.bottom -= fBelow;
}

void TEditPeer::PaintBands() {
  RECT window{};
  ::GetWindowRect(GetHandle(), &window);
  RECT client{};
  ::GetClientRect(GetHandle(), &client);
  ::MapWindowPoints(GetHandle(), nullptr, reinterpret_cast<POINT*>(&client), 2);
  ::OffsetRect(&client, -window.left, -window.top);
  const RECT above{client.left, client.top - fAbove, client.right, client.top};
  const RECT below{client.left, client.bottom, client.right, client.bottom + fBelow};
  const HDC dc = ::GetWindowDC(GetHandle());
  ::FillRect(dc, &above, GetColorBrush());
  ::FillRect(dc, &below, GetColorBrush());
  ::ReleaseDC(GetHandle(), dc);
}

LRESULT TEditPeer::HandleFrame(UINT message, WPARAM wParam, LPARAM lParam) {
  const LRESULT result = TWindowPeer::WindowProc(message, wParam, lParam);
  if (message == WM_NCCALCSIZE) NarrowToLine(*reinterpret_cast<RECT*>(lParam));
  if (message == WM_NCPAINT) PaintBands();
  // The bands take clicks as the line does.
  return message == WM_NCHITTEST && (result == HTNOWHERE || result == HTBORDER) ? HTCLIENT : result;
}

LRESULT TEditPeer::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  const bool command = wParam == VK_RETURN || wParam == VK_TAB || wParam == VK_ESCAPE;
  if (message == WM_CHAR && command && !fEdit.IsMultiLine()) {
    // Nothing that a line can take: the system would beep.
    ReportKey(message, wParam);
    return 0;
  }
  const bool frame = message == WM_NCCALCSIZE || message == WM_NCPAINT || message == WM_NCHITTEST;
  if (frame && !fEdit.IsMultiLine()) return HandleFrame(message, wParam, lParam);
  return TWindowPeer::WindowProc(message, wParam, lParam);
}

namespace win32 {

std::unique_ptr<IEditPeer> MakeEditPeer(TCustomEdit& edit) {
  auto peer = std::make_unique<TEditPeer>(edit);
  peer->Create();
  return peer;
}

}  // namespace win32

}  // namespace oak
