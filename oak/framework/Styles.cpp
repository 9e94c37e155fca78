#include "oak/framework/Styles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <list>

#include "oak/framework/Application.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/WidgetSet.h"

namespace oak {
namespace {

/// The system's own look.
class TSystemStyle final : public TStyle {
 public:
  TSystemStyle() : TStyle(u"System", false) {}
  bool IsSystemStyle() const override { return true; }
  bool IsDark() const override { return WidgetSet().IsDarkMode(); }
  TColor GetSystemColor(TColor color) const override {
    return IsSystemColor(color) ? GraphicsSystem().GetSystemColor(static_cast<int>(color & 0xFF))
                                : ColorToRGB(color);
  }
  TColor GetStyleColor(TStyleColor color) const override {
    static constexpr std::array<TColor, scCount> colors{
        clWindowFrame, clWindow, clWindow, clWindow, clBtnFace, clBtnFace, clBtnFace};
    return GetSystemColor(color < scCount ? colors[color] : clWindow);
  }
};

/// What a built-in style is made of, each as 0x00BBGGRR.
struct TPalette {
  TColor Window, Text, Face, Edge, Highlight, HighlightText, Gray, Hot, Header;
};
constexpr TPalette LightPalette{0xFFFFFF, 0x1B1B1B, 0xF3F3F3, 0xCCCCCC, 0xD4781C,
                                0xFFFFFF, 0x6D6D6D, 0xCC6600, 0xFAFAFA};
constexpr TPalette DarkPalette{0x202020, 0xF0F0F0, 0x2B2B2B, 0x4A4A4A, 0x8C5A24,
                               0xFFFFFF, 0x9A9A9A, 0xFFB469, 0x2F2F2F};

/// A style of the library.
class TBuiltInStyle final : public TStyle {
 public:
  TBuiltInStyle(TString name, bool dark, const TPalette& palette)
      : TStyle(std::move(name), dark), fPalette(palette) {}

  TColor GetSystemColor(TColor color) const override {
    switch (color) {
      case clWindow:
      case clInfoBk:
        return fPalette.Window;
      case clWindowText:
      case clMenuText:
      case clBtnText:
      case clCaptionText:
      case clInfoText:
        return fPalette.Text;
      case clBtnFace:
      case clMenu:
      case clMenuBar:
      case clScrollBar:
      case clBackground:
      case clAppWorkSpace:
      case clActiveCaption:
      case clInactiveCaption:
      case clGradientActiveCaption:
      case clGradientInactiveCaption:
        return fPalette.Face;
      case clWindowFrame:
      case clBtnShadow:
      case clBtnHighlight:
      case cl3DDkShadow:
      case cl3DLight:
      case clActiveBorder:
      case clInactiveBorder:
        return fPalette.Edge;
      case clHighlight:
      case clMenuHighlight:
        return fPalette.Highlight;
      case clHighlightText:
        return fPalette.HighlightText;
      case clGrayText:
      case clInactiveCaptionText:
        return fPalette.Gray;
      case clHotLight:
        return fPalette.Hot;
      default:
        return IsSystemColor(color) ? fPalette.Face : ColorToRGB(color);
    }
  }

  TColor GetStyleColor(TStyleColor color) const override {
    switch (color) {
      case scBorder:
        return fPalette.Edge;
      case scEdit:
      case scListView:
      case scTreeView:
        return fPalette.Window;
      case scHeader:
        return fPalette.Header;
      default:
        return fPalette.Face;
    }
  }

 private:
  TPalette fPalette;
};

/// The styles of the program and who wants to know of changes.
struct TStyles {
  std::vector<std::unique_ptr<TStyle>> Registered;  // the system's first
  TStyle* Active = nullptr;
  std::list<std::pair<std::uint64_t, std::function<void()>>> Handlers;
  std::uint64_t LastHandler = 0;

  TStyles() {
    Registered.push_back(std::make_unique<TSystemStyle>());
    Registered.push_back(std::make_unique<TBuiltInStyle>(u"Light", false, LightPalette));
    Registered.push_back(std::make_unique<TBuiltInStyle>(u"Dark", true, DarkPalette));
    Active = Registered.front().get();
  }
};

TStyles& Styles() {
  static auto& styles = *new TStyles;  // forms of static life take their handlers away late
  return styles;
}

// For ColorToRGB, which any thread may call.
std::atomic<const TStyle*> gColorStyle{nullptr};

TColor ColorOfActiveStyle(int index) {
  const TStyle* style = gColorStyle.load(std::memory_order_acquire);
  return style ? style->GetSystemColor(SystemColor(index)) : GraphicsSystem().GetSystemColor(index);
}

}  // namespace

TStyle& TStyleManager::ActiveStyle() { return *Styles().Active; }

TStyle& TStyleManager::SystemStyle() { return *Styles().Registered.front(); }

bool TStyleManager::TrySetStyle(TStringView name) {
  for (const auto& style : Styles().Registered) {
    if (!SameText(style->GetName(), name)) continue;
    if (style.get() == Styles().Active) return true;
    Styles().Active = style.get();
    gColorStyle.store(style->IsSystemStyle() ? nullptr : style.get(), std::memory_order_release);
    SetSystemColorProvider(style->IsSystemStyle() ? nullptr : &ColorOfActiveStyle);
    NotifyChange();
    return true;
  }
  return false;
}

void TStyleManager::RegisterStyle(std::unique_ptr<TStyle> style) {
  if (style) Styles().Registered.push_back(std::move(style));
}

std::vector<TString> TStyleManager::GetStyleNames() {
  std::vector<TString> names;
  for (const auto& style : Styles().Registered) names.push_back(style->GetName());
  return names;
}

bool TStyleManager::IsThemed() { return WidgetSet().IsThemed(); }

std::shared_ptr<void> TStyleManager::OnChange(std::function<void()> handler) {
  TStyles& styles = Styles();
  const std::uint64_t number = ++styles.LastHandler;
  styles.Handlers.emplace_back(number, std::move(handler));
  return std::shared_ptr<void>(nullptr, [number](void*) {
    Styles().Handlers.remove_if([number](const auto& entry) { return entry.first == number; });
  });
}

void TStyleManager::NotifyChange() {
  // A handler may take others away: each is looked up before it runs.
  std::vector<std::uint64_t> numbers;
  for (const auto& entry : Styles().Handlers) numbers.push_back(entry.first);
  for (const std::uint64_t number : numbers) {
    const auto& handlers = Styles().Handlers;
    const auto found = std::find_if(handlers.begin(), handlers.end(),
                                    [number](const auto& entry) { return entry.first == number; });
    if (found == handlers.end()) continue;
    const std::function<void()> handler = found->second;
    try {
      handler();
    } catch (...) {
      Application().HandleException(nullptr);
    }
  }
}

}  // namespace oak
