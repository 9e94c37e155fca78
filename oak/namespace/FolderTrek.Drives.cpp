// Whether a drive can be read, and what to ask the user when it can't.
#include <algorithm>

#include "oak/framework/Host.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr DWORD ErrorLogonFailure = 1326;
constexpr DWORD ErrorCantAccessFile = 1920;
constexpr DWORD FveLockedVolume = 0x80310000;

/// Probes the root that a path lies on; a failure stays as last error.
bool ProbeDrive(TStringView pPath) {
  const TString drive = ExtractFileDrive(pPath);
  const TString root = IncludeTrailingPathDelimiter(drive.empty() ? TString(pPath) : drive);
  ULARGE_INTEGER free;
  return Api().GetDiskFreeSpaceExW(W(root), &free, nullptr, nullptr) != 0;
}

/// Whether a logon could make the drive readable.
bool MayBeUnlocked(DWORD pError, TStringView pPath) {
  constexpr DWORD errors[] = {ErrorLogonFailure,    ErrorCantAccessFile, FveLockedVolume,
                              ERROR_PATH_NOT_FOUND, ERROR_BAD_NETPATH,   ERROR_ACCESS_DENIED};
  return std::find(std::begin(errors), std::end(errors), pError) != std::end(errors) ||
         !Api().IsUserAnAdmin() || !TPathUtils::StartsWithDriveLetter(pPath);
}

bool ProbeOrAuthenticate(TStringView pPath, bool pAuthenticate, DWORD& pError) {
  const TErrorMode quiet;
  if (ProbeDrive(pPath)) return true;
  pError = Api().GetLastError();
  if (!MayBeUnlocked(pError, pPath)) return false;
  const bool interactive = Host().IsInteractive && Host().IsInteractive();
  if (!interactive) return pError == ErrorLogonFailure;
  return TShellControlHelper::Authenticate(pPath, pAuthenticate) && ProbeDrive(pPath);
}

}  // namespace

bool IsDriveReady(TStringView pPath, bool pAuthenticate) {
  if (IsUncServer(pPath)) return true;
  DWORD error = ERROR_SUCCESS;
  const bool ready = ProbeOrAuthenticate(pPath, pAuthenticate, error);
  if (error != ERROR_SUCCESS) Api().SetLastError(error);
  return ready;
}

}  // namespace oak
