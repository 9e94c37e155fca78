#include "oak/framework/ComApartment.h"

#include "oak/platform/Api.h"

namespace oak {

TComApartment::TComApartment(DWORD mode)
    : fResult(Api().CoInitializeEx(nullptr, mode)), fEntered(SUCCEEDED(fResult)) {}

void TComApartment::Leave() noexcept {
  if (fEntered) Api().CoUninitialize();
  fEntered = false;
}

}  // namespace oak
