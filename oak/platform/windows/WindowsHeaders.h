// The system's own declarations, with what some SDKs lack. Included through the headers
// oak/platform/shell_api*.h only.
#pragma once

#include "oak/base/abi.h"

// clang-format off
#include <winioctl.h>
#include <ole2.h>
#include <objidl.h>
#include <oleidl.h>
#include <servprov.h>
#include <ocidl.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shobjidl.h>
#include <shlguid.h>
#include <knownfolders.h>
#include <propsys.h>
#include <propkey.h>
#include <propvarutil.h>
#include <shlwapi.h>
#include <shellscalingapi.h>
#include <structuredquerycondition.h>
#include <winnetwk.h>
#include <commctrl.h>
#if defined(_MSC_VER)
#include <structuredquery.h>
#endif
// clang-format on

#include <cstdarg>

using NTSTATUS = LONG;
using FORMAT_ARGUMENTS = char*;  // what va_list is here
#if !defined(_MSC_VER)
using LSTATUS = LONG;
#endif

// Macros that would rewrite names of ours.
#undef interface
#undef small
#undef near
#undef far
#undef GetObject
#undef GetMessage
#undef GetProp
#undef GetClassName
#undef GetCurrentDirectory
#undef GetCurrentTime
#undef GetDateFormat
#undef GetFileAttributes
#undef GetFullPathName
#undef GetLongPathName
#undef GetTempPath
#undef GetDriveType
#undef GetUserName
#undef GetEnvironmentVariable
#undef ExpandEnvironmentStrings
#undef CreateDirectory
#undef RemoveDirectory
#undef CreateFile
#undef CopyFile
#undef MoveFile
#undef DeleteFile
#undef FindFirstFile
#undef FindNextFile
#undef FindText
#undef FormatMessage
#undef LoadLibrary
#undef LoadString
#undef LoadImage
#undef LoadBitmap
#undef LoadIcon
#undef DrawText
#undef CreateWindow
#undef OutputDebugString
#undef PathCombine
#undef PathCanonicalize
#undef PathMatchSpec
#undef PostMessage
#undef SendMessage
#undef RegisterClass
#undef RegisterClipboardFormat
#undef ReportEvent
#undef ShellExecute
#undef StrRetToStr
#undef StrFormatByteSize
#undef TextOut
#undef SHGetFileInfo
#undef SHQueryRecycleBin
#undef Yield

// What MinGW's headers lack.
#if !defined(FILE_ATTRIBUTE_RECALL_ON_OPEN)
#define FILE_ATTRIBUTE_RECALL_ON_OPEN 0x00040000
#endif
#if !defined(FILE_ATTRIBUTE_RECALL_ON_DATA_ACCESS)
#define FILE_ATTRIBUTE_RECALL_ON_DATA_ACCESS 0x00400000
#endif
