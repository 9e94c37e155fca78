// Looks of controls, and small services around them.
#include <algorithm>

#include "oak/framework/Forms.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/Host.h"
#include "oak/framework/ListView.h"
#include "oak/framework/Menus.h"
#include "oak/framework/Styles.h"
#include "oak/framework/Thread.h"
#include "oak/framework/TreeView.h"
#include "oak/namespace/FolderTrek.Menus.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

// Messages and styles of the system's list and tree, as published.
constexpr UINT ListSetExtendedStyle = 4150;
constexpr LPARAM ListDoubleBuffer = 0x10000;
constexpr UINT TreeSetExtendedStyle = 4396;
constexpr LPARAM TreeFadeButtons = 64;
constexpr UINT TreeSetItemHeight = 4379;
constexpr UINT TreeGetNextItem = 4362;
constexpr UINT TreeSetItem = 4415;
constexpr WPARAM NextRoot = 0, NextSibling = 1, NextChild = 4;
constexpr UINT TreeItemIntegral = 0x80;

/// What the tree is told of one entry.
struct TTreeItemInfo {
  UINT Mask;
  LRESULT Item;
  UINT State;
  UINT StateMask;
  LPWSTR Text;
  int TextMax;
  int Image;
  int SelectedImage;
  int Children;
  LPARAM Param;
  int Integral;
  UINT StateEx;
  HWND Window;
  int ExpandedImage;
  int Reserved;
};

void ApplyTheme(HWND pWindow, const char16_t* pTheme) {
  if (Api().SetWindowTheme)
    static_cast<void>(Api().SetWindowTheme(pWindow, pTheme ? W(pTheme) : nullptr, nullptr));
}

bool IsDark() {
  return IsDarkModeSupported() && Api().ShouldAppsUseDarkMode && Api().ShouldAppsUseDarkMode();
}

/// The window's own entry of a node, found from the roots on; 0 if there is none.
LRESULT EntryOfNode(HWND pTree, const TTreeNode& pNode) {
  const TTreeNode* parent = pNode.GetParent();
  const LRESULT above = parent ? EntryOfNode(pTree, *parent) : 0;
  if (parent && above == 0) return 0;
  LRESULT entry = Api().SendMessageW(pTree, TreeGetNextItem, parent ? NextChild : NextRoot, above);
  for (const TTreeNode* node = pNode.GetPrevSibling(); node && entry; node = node->GetPrevSibling())
    entry = Api().SendMessageW(pTree, TreeGetNextItem, NextSibling, entry);
  return entry;
}

}  // namespace

int TShellControlHelper::ScaledPixels(int pPixels) {
  const int density = Host().PixelsPerInch ? Host().PixelsPerInch() : 96;
  return std::max(pPixels, MulDiv(pPixels, density, 96));
}

// --- edits -------------------------------------------------------------------------------
bool TShellControlHelper::EnableAutoComplete(HWND pHandle, TOakShellAutoCompleteOptions pOptions) {
  // All sources, with suggesting and appending forced off.
  constexpr DWORD nothing = 0xA0000047;
  constexpr DWORD useTab = 8;
  constexpr struct {
    TOakShellAutoCompleteOption Option;
    DWORD Flags;
  } rows[] = {{acoFileSystem, 1}, {acoFolderOnly, 32}, {acoURL, 6}, {acoVirtualNameSpace, 64}};
  DWORD flags = useTab;
  for (const auto& row : rows)
    if (pOptions.Contains(row.Option)) flags |= row.Flags;
  return EnableAutoComplete(pHandle, pOptions.IsEmpty() ? nothing : flags);
}

bool TShellControlHelper::EnableAutoComplete(HWND pHandle, DWORD pFlags) {
  return pHandle && Api().SHAutoComplete && SUCCEEDED(Api().SHAutoComplete(pHandle, pFlags));
}

// --- lists and trees -----------------------------------------------------------------------
void TShellControlHelper::ApplyExplorerStyle(TCustomListView& pListView, bool pOff) {
  if (!pOff) pListView.SetRowSelect(true);
  if (!pListView.HandleAllocated()) return;
  const HWND window = pListView.GetHandle();
  if (!pOff)
    Api().SendMessageW(window, ListSetExtendedStyle, static_cast<WPARAM>(ListDoubleBuffer),
                       ListDoubleBuffer);
  ApplyTheme(window, pOff ? nullptr : u"explorer");
}

void TShellControlHelper::ApplyExplorerStyle(TCustomTreeView& pTreeView, bool pOff) {
  const HWND window = pTreeView.HandleAllocated() ? pTreeView.GetHandle() : nullptr;
  if (pOff) {
    if (window) ApplyTheme(window, nullptr);
    return;
  }
  if (window) {
    ApplyTheme(window, IsDark() ? u"darkmode_explorer" : u"explorer");
    Api().SendMessageW(window, TreeSetExtendedStyle, static_cast<WPARAM>(TreeFadeButtons),
                       TreeFadeButtons);
  }
  pTreeView.SetShowLines(false);
  pTreeView.SetShowRoot(true);
  pTreeView.SetRowSelect(true);
  const int text = GetTextExtent(pTreeView.GetFont(), u"Mg").Height;
  const int height = std::max(std::max(20, pTreeView.ScaledPixels(20)), text) + 2;
  SetTreeNodeHeight(pTreeView, IsWindows10OrLater() ? height + 2 : height);
}

void TShellControlHelper::SetTreeNodeHeight(TCustomTreeView& pTreeView, int pHeight) {
  if (!pTreeView.HandleAllocated()) return;
  Api().SendMessageW(pTreeView.GetHandle(), TreeSetItemHeight, static_cast<WPARAM>(pHeight), 0);
}

bool TShellControlHelper::SetNodeIntegralHeight(const TTreeNode& pNode, int pRows) {
  TCustomTreeView* tree = pNode.GetTreeView();
  if (!tree || !tree->HandleAllocated() || pRows < 1) return false;
  const HWND window = tree->GetHandle();
  TTreeItemInfo info{};
  info.Mask = TreeItemIntegral;
  info.Item = EntryOfNode(window, pNode);
  info.Integral = pRows;
  return info.Item != 0 &&
         Api().SendMessageW(window, TreeSetItem, 0, reinterpret_cast<LPARAM>(&info)) != 0;
}

// --- fonts -----------------------------------------------------------------------------------
void TShellControlHelper::ApplyExplorerFont(TFont& pFont) {
  const TColor color = pFont.GetColor();
  TFont font;
  GraphicsSystem().GetSystemFont(TSystemFont::IconTitle, pFont.GetPixelsPerInch(), font);
  font.SetColor(color);
  pFont.Assign(&font);
}

void TShellControlHelper::ApplyExplorerFont(TControl& pControl) {
  TFont font = pControl.GetFont();
  font.ChangeScale(pControl.GetCurrentPPI());
  ApplyExplorerFont(font);
  pControl.SetFont(font);
}

TSize TShellControlHelper::GetTextExtent(const TFont& pFont, TStringView pText) {
  return TextExtent(pFont, pText);
}

int TShellControlHelper::GetTextWidth(const TFont& pFont, TStringView pText) {
  return TextExtent(pFont, pText).Width;
}

// --- windows and menus -------------------------------------------------------------------------
HWND TShellControlHelper::GetOwningWindowHandle(TComponent* pComponent) {
  for (TComponent* component = pComponent; component; component = component->GetOwner()) {
    auto* control = dynamic_cast<TControl*>(component);
    if (!control) continue;
    TWinControl* form = control->GetParentForm();
    if (form && form->HandleAllocated()) return form->GetHandle();
    // In a window of a foreign program part there is no form.
    auto* window = dynamic_cast<TWinControl*>(control);
    if (window && window->HandleAllocated()) return window->GetHandle();
  }
  return Host().ApplicationWindow ? Host().ApplicationWindow() : nullptr;
}

std::unique_ptr<TPopupMenu> TShellControlHelper::ClonePopupMenu(TPopupMenu* pMenu) {
  return CloneMenu(pMenu);
}

// --- TControlHelper ------------------------------------------------------------------------------
int TControlHelper::ScaledPixels(const TControl& pControl, int pPixels) {
  return pControl.ScaledPixels(pPixels);
}

int TControlHelper::UnScaledPixels(const TControl& pControl, int pPixels) {
  return pControl.UnScaledPixels(pPixels);
}

int TControlHelper::GetCurrentPPI(const TControl& pControl) { return pControl.GetCurrentPPI(); }

void TControlHelper::BeginInvoke(TControl& pControl, std::function<void()> pProcedure) {
  TThread::ForceQueue(nullptr,
                      [guard = pControl.GetLifeGuard(), procedure = std::move(pProcedure)] {
                        if (guard.IsAlive() && procedure) procedure();
                      });
}

bool TControlHelper::GetInvokeRequired(const TControl&) noexcept { return !IsMainThread(); }

TStyle& TControlHelper::StyleServices(const TControl& pControl) {
  return pControl.GetStyleElements().Contains(seClient) ? TStyleManager::ActiveStyle()
                                                        : TStyleManager::SystemStyle();
}

TString TControlHelper::GetCaption(const TControl& pControl) { return pControl.GetCaption(); }

}  // namespace oak
