// embedding: controls of the library in a window of a program that has a WinMain, a window class
// and a message loop of its own.
#include <cstdio>
#include <string>
#include <vector>

#include "examples/embedding/windows/Check.h"
#include "oak/framework/Application.h"
#include "oak/framework/Png.h"
#include "oak/framework/win32/Screenshot.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Console.h"

using namespace oak;

namespace {

constexpr char Usage[] =
    "usage: embedding [--check] [--screenshot FILE.png] [FOLDER]\n"
    "  --check            works the window by itself, compares what it shows, and ends\n"
    "  --screenshot FILE  saves a picture of the window and ends\n";

struct TOptions {
  bool Check = false;
  std::string Screenshot;
  std::string Folder = "C:\\";
};

bool ReadOptions(const std::vector<std::string>& arguments, TOptions& options) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--check")
      options.Check = true;
    else if (arguments[i] == "--screenshot" && i + 1 < arguments.size())
      options.Screenshot = arguments[++i];
    else if (arguments[i].starts_with("--"))
      return false;
    else
      options.Folder = arguments[i];
  }
  return true;
}

void RunWaitingMessages() {
  MSG message;
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
}

/// The loop that such programs have.
int RunLoop() {
  MSG message;
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
  return static_cast<int>(message.wParam);
}

bool SavePicture(HWND window, const std::string& file) {
  RunWaitingMessages();
  const TBitmap picture = TakeScreenshot(window);
  if (picture.IsEmpty()) return false;
  SavePng(picture, FromUtf8(file));
  return true;
}

int Run(const TOptions& options) {
  const TString folder = FromUtf8(options.Folder);
  THostWindow host(folder);
  ::ShowWindow(host.GetHandle(), SW_SHOW);
  if (!options.Screenshot.empty() && !SavePicture(host.GetHandle(), options.Screenshot)) return 1;
  if (options.Check) return CheckHost(host, folder, &RunWaitingMessages) ? 0 : 1;
  return options.Screenshot.empty() ? RunLoop() : 0;
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  TOptions options;
  if (!ReadOptions(ConsoleArguments(__argc, __argv), options)) {
    std::fputs(Usage, stderr);
    return 2;
  }
  // The library is a guest here: the process is as the program has set it up.
  Application().SetIsLibrary(true);
  ::OleInitialize(nullptr);
  int result = 1;
  try {
    result = Run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "embedding: %s\n", error.what());
  }
  FinalizeShell();
  ::OleUninitialize();
  return result;
}
