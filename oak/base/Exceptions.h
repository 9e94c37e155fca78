// The exceptions of the library.
#pragma once

#include <exception>
#include <string>

#include "oak/base/Text.h"

namespace oak {

/// How much IHasDebugInfo::GetInfo tells.
enum class TItemIdListInfoLevel : std::uint8_t { Normal, Verbose };

/// An object that can describe its state in an error message. Any thread.
struct IHasDebugInfo : IUnknown {
  static constexpr GUID Iid{
      0x68F5A3CD, 0xB8FE, 0x4400, {0xB3, 0x12, 0xDC, 0x23, 0x34, 0xAF, 0x73, 0x1E}};
  virtual TString GetInfo(TItemIdListInfoLevel level) = 0;
};

/// Root of all exceptions that the library raises.
class Exception : public std::exception {
 public:
  explicit Exception(TString message);
  const TString& GetMessage() const noexcept { return fMessage; }
  void SetMessage(TString message);
  /// The message in UTF-8.
  const char* what() const noexcept override { return fUtf8.c_str(); }

 private:
  TString fMessage;
  std::string fUtf8;
};

class EArgumentException : public Exception {
  using Exception::Exception;
};
class EInvalidArgument : public Exception {
  using Exception::Exception;
};
class EInvalidOperation : public Exception {
  using Exception::Exception;
};
class EInvalidCast : public Exception {
  using Exception::Exception;
};
class EConvertError : public Exception {
  using Exception::Exception;
};
/// COM call that failed in OleCheck.
class EOleSysError : public Exception {
 public:
  explicit EOleSysError(HRESULT code);
  HRESULT GetErrorCode() const noexcept { return fErrorCode; }

 private:
  HRESULT fErrorCode;
};

/// A failure of the system, with its code.
class EOSError : public Exception {
 public:
  EOSError(std::uint32_t code, TString message) : Exception(std::move(message)), fErrorCode(code) {}
  std::uint32_t GetErrorCode() const noexcept { return fErrorCode; }

 private:
  std::uint32_t fErrorCode;
};

/// A failure of the namespace. The code is a Win32 error code where one is
/// known, else the whole HRESULT, else 0.
class EFolderTrekError : public EOSError {
 public:
  /// The system's text for the code; a non-empty message follows after a blank.
  EFolderTrekError(std::uint32_t code, TStringView message);
  EFolderTrekError(HRESULT code, TStringView message);
  /// The message, and the object's debug text if it has one.
  EFolderTrekError(TStringView message, IUnknown* object);
  /// The system's text for the code, and the object's debug text if it has one.
  EFolderTrekError(std::uint32_t code, IUnknown* object);
};

/// " Internal data: " and the object's debug text, or empty without one.
TString InternalDataText(IUnknown* object);

/// Gives the text of a system error code. The platform layer installs the
/// system's table; before that, and for a code that the provider has no text for,
/// a code reads "Error Code 0x" and its eight digits. Any thread.
using TErrorTextProvider = TString (*)(std::uint32_t code);
void SetErrorTextProvider(TErrorTextProvider provider) noexcept;
TString ErrorText(std::uint32_t code);

}  // namespace oak
