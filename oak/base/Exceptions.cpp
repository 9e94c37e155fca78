#include "oak/base/Exceptions.h"

#include <atomic>

#include "oak/base/Ref.h"

namespace oak {

namespace {
std::atomic<TErrorTextProvider> gErrorTextProvider{nullptr};

TString WithMessage(TString text, TStringView message) {
  if (!message.empty()) text.append(u" ").append(message);
  return text;
}
}  // namespace

Exception::Exception(TString message) : fMessage(std::move(message)), fUtf8(ToUtf8(fMessage)) {}

void Exception::SetMessage(TString message) {
  fUtf8 = ToUtf8(message);
  fMessage = std::move(message);
}

EOleSysError::EOleSysError(HRESULT code)
    : Exception(ErrorText(static_cast<std::uint32_t>(code))), fErrorCode(code) {}

EFolderTrekError::EFolderTrekError(std::uint32_t code, TStringView message)
    : EOSError(code, WithMessage(ErrorText(code), message)) {}

EFolderTrekError::EFolderTrekError(HRESULT code, TStringView message)
    : EFolderTrekError(static_cast<std::uint32_t>(code), message) {}

EFolderTrekError::EFolderTrekError(TStringView message, IUnknown* object)
    : EOSError(0, TString(message) + InternalDataText(object)) {}

EFolderTrekError::EFolderTrekError(std::uint32_t code, IUnknown* object)
    : EFolderTrekError(code, InternalDataText(object)) {}

TString InternalDataText(IUnknown* object) {
  const auto info = Ref<IUnknown>::Share(object).As<IHasDebugInfo>();
  return info ? u" Internal data: " + info->GetInfo(TItemIdListInfoLevel::Normal) : TString();
}

void SetErrorTextProvider(TErrorTextProvider provider) noexcept {
  gErrorTextProvider.store(provider, std::memory_order_release);
}

TString ErrorText(std::uint32_t code) {
  if (const TErrorTextProvider provider = gErrorTextProvider.load(std::memory_order_acquire))
    if (TString text = provider(code); !text.empty()) return text;
  return u"Error Code 0x" + IntToHex(code, 8);
}

}  // namespace oak
