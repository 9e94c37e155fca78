// Views of folders, and what extensions of the shell implement.
#pragma once

#if defined(_WIN32)
#include "oak/platform/windows/WindowsHeaders.h"
#else

#include "oak/platform/shell_api_folder.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IShellBrowser;

/// What IShellView::GetItemObject is asked for.
inline constexpr UINT SVGIO_BACKGROUND = 0;
inline constexpr UINT SVGIO_SELECTION = 1;
inline constexpr UINT SVGIO_ALLVIEW = 2;

using SVSIF = UINT;
using LPFNSVADDPROPSHEETPAGE = BOOL (*)(void* page, LPARAM lParam);

struct IShellView : IOleWindow {
  virtual HRESULT TranslateAccelerator(MSG* pmsg) = 0;
  virtual HRESULT EnableModeless(BOOL fEnable) = 0;
  virtual HRESULT UIActivate(UINT uState) = 0;
  virtual HRESULT Refresh() = 0;
  virtual HRESULT CreateViewWindow(IShellView* psvPrevious, const FOLDERSETTINGS* pfs,
                                   IShellBrowser* psb, RECT* prcView, HWND* phWnd) = 0;
  virtual HRESULT DestroyViewWindow() = 0;
  virtual HRESULT GetCurrentInfo(FOLDERSETTINGS* pfs) = 0;
  virtual HRESULT AddPropertySheetPages(DWORD dwReserved, LPFNSVADDPROPSHEETPAGE pfn,
                                        LPARAM lparam) = 0;
  virtual HRESULT SaveViewState() = 0;
  virtual HRESULT SelectItem(PCUITEMID_CHILD pidlItem, SVSIF uFlags) = 0;
  virtual HRESULT GetItemObject(UINT uItem, REFIID riid, void** ppv) = 0;
};

struct IShellExtInit : IUnknown {
  virtual HRESULT Initialize(PCIDLIST_ABSOLUTE pidlFolder, IDataObject* pdtobj,
                             HKEY hkeyProgID) = 0;
};

#pragma GCC diagnostic pop

#endif
