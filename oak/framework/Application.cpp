#include "oak/framework/Application.h"

#include "oak/base/Exceptions.h"
#include "oak/base/TypeName.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

void ToDebugger(const std::exception_ptr& exception) {
  Api().OutputDebugStringW(W(ExceptionText(exception)));
}

}  // namespace

TString ExceptionText(const std::exception_ptr& exception) {
  if (!exception) return {};
  try {
    std::rethrow_exception(exception);
  } catch (const Exception& e) {
    return e.GetMessage().empty() ? TypeNameOf(e) : e.GetMessage();
  } catch (const std::exception& e) {
    const TString text = FromUtf8(e.what());
    return text.empty() ? TypeNameOf(e) : text;
  } catch (...) {
    return u"Unknown exception";
  }
}

TApplication& Application() {
  static auto& application = *new TApplication;  // threads report at any late time
  return application;
}

void TApplication::HandleException(TObject* sender) noexcept {
  HandleException(sender, std::current_exception());
}

void TApplication::HandleException(TObject* sender, std::exception_ptr exception) noexcept {
  try {
    if (!exception) return;
    if (IsMainThread()) {
      Report(sender, exception);
      return;
    }
    const bool posted =
        TMainThreadQueue::Instance().Post([this, exception] { Report(nullptr, exception); });
    if (!posted) ToDebugger(exception);
  } catch (...) {
    // No memory for a report.
  }
}

void TApplication::Report(TObject* sender, const std::exception_ptr& exception) noexcept {
  try {
    if (OnException)
      OnException(sender, exception);
    else
      ShowException(exception);
  } catch (...) {
    try {
      ToDebugger(exception);
    } catch (...) {
      // No memory for a report.
    }
  }
}

}  // namespace oak
