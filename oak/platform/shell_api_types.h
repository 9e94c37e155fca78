// Scalars and structures of the Windows shell: the system's own on Windows, elsewhere declared
// here with the published names and layouts.
#pragma once

#if defined(_WIN32)
#include "oak/platform/windows/WindowsHeaders.h"
#else

#include <cstdarg>

#include "oak/base/abi.h"
#include "oak/platform/shell_api_enums.h"

using ATOM = WORD;
using CLIPFORMAT = WORD;
using COLORREF = DWORD;
using LANGID = WORD;
using LSTATUS = LONG;
using NTSTATUS = LONG;
using REGSAM = DWORD;
using SNB = LPOLESTR*;
using HLOCAL = HANDLE;
using PHKEY = HKEY*;
using PVOID = void*;
using LPBYTE = BYTE*;
using LPBOOL = BOOL*;
using LPFILETIME = FILETIME*;
using FORMAT_ARGUMENTS = va_list;  // for FormatMessageW
using UINT32 = std::uint32_t;
using INT64 = std::int64_t;
using UINT64 = std::uint64_t;
struct HIMAGELIST__;
using HIMAGELIST = HIMAGELIST__*;
struct HENHMETAFILE__;
using HENHMETAFILE = HENHMETAFILE__*;
struct DPI_AWARENESS_CONTEXT__;
using DPI_AWARENESS_CONTEXT = DPI_AWARENESS_CONTEXT__*;

using PUITEMID_CHILD = ITEMIDLIST*;
using KNOWNFOLDERID = GUID;
using REFKNOWNFOLDERID = const KNOWNFOLDERID&;
using FOLDERTYPEID = GUID;
using REFFOLDERTYPEID = const FOLDERTYPEID&;
using SHCOLUMNID = PROPERTYKEY;
using SHCONTF = DWORD;
using SHGDNF = DWORD;
using SFGAOF = ULONG;
using SICHINTF = DWORD;
using SHCOLSTATEF = DWORD;
using KF_DEFINITION_FLAGS = DWORD;
using KF_REDIRECT_FLAGS = DWORD;
using KF_REDIRECTION_CAPABILITIES = DWORD;

// --- geometry and messages -------------------------------------------------
struct POINT {
  LONG x, y;
};
struct POINTL {
  LONG x, y;
};
struct SIZE {
  LONG cx, cy;
};
using SIZEL = SIZE;
struct RECT {
  LONG left, top, right, bottom;
};
struct MSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;
  POINT pt;
};
/// What the owner of an entry that it draws itself is asked for, and what it is to draw.
struct MEASUREITEMSTRUCT {
  UINT CtlType;
  UINT CtlID;
  UINT itemID;
  UINT itemWidth;
  UINT itemHeight;
  ULONG_PTR itemData;
};
struct DRAWITEMSTRUCT {
  UINT CtlType;
  UINT CtlID;
  UINT itemID;
  UINT itemAction;
  UINT itemState;
  HWND hwndItem;
  HDC hDC;
  RECT rcItem;
  ULONG_PTR itemData;
};

// --- files -------------------------------------------------------------------
struct SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
};
struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD dwReserved0;  // the reparse tag of a reparse point
  DWORD dwReserved1;
  WCHAR cFileName[MAX_PATH];
  WCHAR cAlternateFileName[14];
};
struct WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
};
struct BY_HANDLE_FILE_INFORMATION {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD dwVolumeSerialNumber;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD nNumberOfLinks;
  DWORD nFileIndexHigh;
  DWORD nFileIndexLow;
};
struct OVERLAPPED;
enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard, GetFileExMaxInfoLevel };

// --- system --------------------------------------------------------------------
struct OSVERSIONINFOW {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  WCHAR szCSDVersion[128];
};
struct OSVERSIONINFOEXW {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  WCHAR szCSDVersion[128];
  WORD wServicePackMajor;
  WORD wServicePackMinor;
  WORD wSuiteMask;
  BYTE wProductType;
  BYTE wReserved;
};
using RTL_OSVERSIONINFOW = OSVERSIONINFOW;
using RTL_OSVERSIONINFOEXW = OSVERSIONINFOEXW;

// --- names and columns of a folder ---------------------------------------------
enum STRRET_TYPE { STRRET_WSTR = 0, STRRET_OFFSET = 1, STRRET_CSTR = 2 };
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
struct STRRET {
  UINT uType;  // STRRET_TYPE
  union {
    LPWSTR pOleStr;  // task memory, freed by the receiver
    UINT uOffset;    // into the item's pidl
    char cStr[MAX_PATH];
  };
};
#pragma GCC diagnostic pop
struct SHELLDETAILS {
  int fmt;  // LVCFMT_* alignment
  int cxChar;
  STRRET str;
};
struct EXTRASEARCH {
  GUID guidSearch;
  WCHAR wszFriendlyName[80];
  WCHAR wszUrl[2084];
};
struct SHFILEINFOW {
  HICON hIcon;
  int iIcon;
  DWORD dwAttributes;
  WCHAR szDisplayName[MAX_PATH];
  WCHAR szTypeName[80];
};
struct SHDESCRIPTIONID {
  DWORD dwDescriptionId;
  CLSID clsid;
};
struct FOLDERSETTINGS {
  UINT ViewMode;
  UINT fFlags;
};
struct KNOWNFOLDER_DEFINITION {
  KF_CATEGORY category;
  LPWSTR pszName;
  LPWSTR pszDescription;
  KNOWNFOLDERID fidParent;
  LPWSTR pszRelativePath;
  LPWSTR pszParsingName;
  LPWSTR pszTooltip;
  LPWSTR pszLocalizedName;
  LPWSTR pszIcon;
  LPWSTR pszSecurity;
  DWORD dwAttributes;
  KF_DEFINITION_FLAGS kfdFlags;
  FOLDERTYPEID ftidType;
};

// --- storage and binding ----------------------------------------------------------
struct STATSTG {
  LPOLESTR pwcsName;
  DWORD type;  // STGTY_*
  ULARGE_INTEGER cbSize;
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};
struct BIND_OPTS {
  DWORD cbStruct;
  DWORD grfFlags;
  DWORD grfMode;
  DWORD dwTickCountDeadline;
};

// --- data transfer -------------------------------------------------------------------
struct DVTARGETDEVICE;
struct FORMATETC {
  CLIPFORMAT cfFormat;
  DVTARGETDEVICE* ptd;
  DWORD dwAspect;
  LONG lindex;
  DWORD tymed;
};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
struct STGMEDIUM {
  DWORD tymed;
  union {
    HBITMAP hBitmap;
    void* hMetaFilePict;
    HENHMETAFILE hEnhMetaFile;
    HGLOBAL hGlobal;
    LPOLESTR lpszFileName;
    IStream* pstm;
    IStorage* pstg;
  };
  IUnknown* pUnkForRelease;
};
#pragma GCC diagnostic pop
#pragma pack(push, 1)
struct DROPFILES {
  DWORD pFiles;  // offset of the first name; a list of zero-ended names, ended by an empty one
  POINT pt;
  BOOL fNC;
  BOOL fWide;
};
struct FILEDESCRIPTORA {
  DWORD dwFlags;
  CLSID clsid;
  SIZEL sizel;
  POINTL pointl;
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  CHAR cFileName[MAX_PATH];
};
struct FILEDESCRIPTORW {
  DWORD dwFlags;
  CLSID clsid;
  SIZEL sizel;
  POINTL pointl;
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  WCHAR cFileName[MAX_PATH];
};
struct FILEGROUPDESCRIPTORA {
  UINT cItems;
  FILEDESCRIPTORA fgd[1];
};
struct FILEGROUPDESCRIPTORW {
  UINT cItems;
  FILEDESCRIPTORW fgd[1];
};
struct CIDA {
  UINT cidl;
  UINT aoffset[1];  // the folder's list first, then cidl relative ones
};
#pragma pack(pop)
struct HDROP__;
using HDROP = HDROP__*;

// --- commands -----------------------------------------------------------------------------
struct CMINVOKECOMMANDINFO {
  DWORD cbSize;
  DWORD fMask;
  HWND hwnd;
  LPCSTR lpVerb;
  LPCSTR lpParameters;
  LPCSTR lpDirectory;
  int nShow;
  DWORD dwHotKey;
  HANDLE hIcon;
};
struct CMINVOKECOMMANDINFOEX {
  DWORD cbSize;
  DWORD fMask;
  HWND hwnd;
  LPCSTR lpVerb;
  LPCSTR lpParameters;
  LPCSTR lpDirectory;
  int nShow;
  DWORD dwHotKey;
  HANDLE hIcon;
  LPCSTR lpTitle;
  LPCWSTR lpVerbW;
  LPCWSTR lpParametersW;
  LPCWSTR lpDirectoryW;
  LPCWSTR lpTitleW;
  POINT ptInvoke;
};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
struct SHELLEXECUTEINFOW {
  DWORD cbSize;
  ULONG fMask;
  HWND hwnd;
  LPCWSTR lpVerb;
  LPCWSTR lpFile;
  LPCWSTR lpParameters;
  LPCWSTR lpDirectory;
  int nShow;
  HINSTANCE hInstApp;
  void* lpIDList;
  LPCWSTR lpClass;
  HKEY hkeyClass;
  DWORD dwHotKey;
  union {
    HANDLE hIcon;
    HANDLE hMonitor;
  };
  HANDLE hProcess;
};
#pragma GCC diagnostic pop
struct SHQUERYRBINFO {
  DWORD cbSize;
  INT64 i64Size;
  INT64 i64NumItems;
};
struct NETRESOURCEW {
  DWORD dwScope;
  DWORD dwType;
  DWORD dwDisplayType;
  DWORD dwUsage;
  LPWSTR lpLocalName;
  LPWSTR lpRemoteName;
  LPWSTR lpComment;
  LPWSTR lpProvider;
};
#pragma pack(push, 1)
struct SHChangeNotifyEntry {
  PCIDLIST_ABSOLUTE pidl;
  BOOL fRecursive;
};
#pragma pack(pop)
struct COMDLG_FILTERSPEC {
  LPCWSTR pszName;
  LPCWSTR pszSpec;
};
/// The explorer's options; bits that the library does not read are left unnamed.
struct SHELLSTATEW {
  BOOL fShowAllObjects : 1;
  BOOL fShowExtensions : 1;
  BOOL fNoConfirmRecycle : 1;
  BOOL fShowSysFiles : 1;
  BOOL fShowCompColor : 1;
  BOOL fDoubleClickInWebView : 1;
  BOOL fDesktopHTML : 1;
  BOOL fWin95Classic : 1;
  BOOL fDontPrettyPath : 1;
  BOOL fShowAttribCol : 1;
  BOOL fMapNetDrvBtn : 1;
  BOOL fShowInfoTip : 1;
  BOOL fHideIcons : 1;
  BOOL fWebView : 1;
  BOOL fFilter : 1;
  BOOL fShowSuperHidden : 1;
  BOOL fNoNetCrawling : 1;
  DWORD dwWin95Unused;
  UINT uWin95Unused;
  LONG lParamSort;
  int iSortDirection;
  UINT version;
  UINT uNotUsed;
  BOOL fSepProcess : 1;
  BOOL fStartPanelOn : 1;
  BOOL fShowStartPage : 1;
  BOOL fAutoCheckSelect : 1;
  BOOL fIconsOnly : 1;
  BOOL fShowTypeOverlay : 1;
  BOOL fShowStatusBar : 1;
  UINT fSpareFlags : 9;
};

struct IShellFolder;
struct IDataObject;
/// Callback of a folder's default context menu.
using LPFNDFMCALLBACK = HRESULT (*)(IShellFolder* folder, HWND window, IDataObject* data,
                                    UINT message, WPARAM wParam, LPARAM lParam);

#endif
