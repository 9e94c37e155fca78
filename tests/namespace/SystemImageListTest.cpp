// Icons of the system in all sizes, their numbers, and what is remembered of them.
#include "oak/namespace/Oak.Shell.SystemImageList.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "oak/framework/BitmapPixels.h"
#include "oak/framework/ComApartment.h"
#include "oak/namespace/OakItemIdList.h"
#include "testkit/CallCounter.h"
#include "testkit/FaultInjection.h"
#include "testkit/ScopedApi.h"
#include "testkit/ScopedHost.h"
#include "tests/MessageOf.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using testkit::TCallCounter;
using testkit::TScopedApi;

class SystemImageList : public testing::Test {
 protected:
  SystemImageList() { TOakSystemImageList::ForgetIcons(); }
  ~SystemImageList() override { TOakSystemImageList::ForgetIcons(); }
};

/// Stands in for the system and notes what it is asked.
class TFileInfoScript {
 public:
  struct TCall {
    TString Name;
    DWORD Attributes;
    UINT Flags;
  };

  TFileInfoScript()
      : fEntry(Api().SHGetFileInfoW,
               [this](LPCWSTR name, DWORD attributes, SHFILEINFOW* info, UINT,
                      UINT flags) -> DWORD_PTR {
                 Calls.push_back({flags & SHGFI_PIDL ? TString() : FromW(name), attributes, flags});
                 if (OnCall) OnCall();
                 if (Fails) return 0;
                 info->iIcon = static_cast<int>(Calls.size());
                 const TString type = u"  Type " + IntToStr(info->iIcon) + u" ";
                 std::copy_n(W(type), type.size() + 1, info->szTypeName);
                 return 1;
               }) {}

  std::vector<TCall> Calls;
  bool Fails = false;
  std::function<void()> OnCall;

 private:
  TScopedApi<decltype(TApi::SHGetFileInfoW)> fEntry;
};

// --- numbers ---------------------------------------------------------------------------
TEST_F(SystemImageList, AnExtensionCostsOneCall) {
  const TCallCounter calls;
  const int icon = TOakSystemImageList::GetIndexFromExtension(u".txt", si_Small, false);
  EXPECT_GE(icon, 0);
  EXPECT_EQ(calls.Total(), 1) << calls.ToString();
  EXPECT_EQ(calls.Count("SHGetFileInfoW"), 1);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromExtension(u".txt", si_Small, false), icon);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromExtension(u"txt", si_Small, false), icon);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromPathByExt(u"Z:\\none\\a.b.txt"), icon);
  EXPECT_EQ(calls.Total(), 1) << calls.ToString();
  // Another size and an open state are other questions, also for a name without extension.
  EXPECT_GE(TOakSystemImageList::GetIndexFromExtension(u".txt", si_Large, false), 0);
  EXPECT_GE(TOakSystemImageList::GetIndexFromExtension(u".txt", si_Small, true), 0);
  EXPECT_GE(TOakSystemImageList::GetIndexFromExtension(u"", si_Small, false), 0);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromPathByExt(u"C:\\x.y\\README"),
            TOakSystemImageList::GetIndexFromExtension(u"", si_Small, false));
  EXPECT_EQ(calls.Total(), 4) << calls.ToString();
}

TEST_F(SystemImageList, WhatTheSystemIsAsked) {
  TFileInfoScript script;
  const Ref<IItemIdList> desktop = TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true);
  TOakSystemImageList::GetIndexFromExtension(u"abc", si_Small, false);
  TOakSystemImageList::GetIndexFromExtension(u".abc", si_Large, true);
  TOakSystemImageList::GetIndexFromExtension(u"", si_Jumbo, false);
  TOakSystemImageList::GetIndexFromItemIdList(desktop, si_Large, false);
  TOakSystemImageList::GetIndexFromItemIdList(desktop, si_ExtraLarge, true);
  TOakSystemImageList::GetIndexFromPath(u"C:\\dir", si_SysSmall, false);
  TOakSystemImageList::GetFileType(u"abc");
  TOakSystemImageList::GetFileType(u"");
  const struct {
    const char16_t* Name;
    DWORD Attributes;
    UINT Flags;
  } expected[] = {{u"test.abc", 128, 0x4011}, {u"test.abc", 128, 0x4012}, {u"test", 128, 0x4011},
                  {u"", 0, 0x4008},           {u"", 0, 0x400B},           {u"C:\\dir", 0, 0x4001},
                  {u"test.abc", 128, 1040},   {u"test", 128, 1040}};
  ASSERT_EQ(script.Calls.size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(script.Calls[i].Name, expected[i].Name) << i;
    EXPECT_EQ(script.Calls[i].Attributes, expected[i].Attributes) << i;
    EXPECT_EQ(script.Calls[i].Flags, expected[i].Flags) << i;
  }
}

TEST_F(SystemImageList, TypesAreRememberedByExtensionInAnyCase) {
  TFileInfoScript script;
  EXPECT_EQ(TOakSystemImageList::GetFileType(u"Abc"), u"Type 1");
  EXPECT_EQ(TOakSystemImageList::GetFileType(u"aBC"), u"Type 1");
  EXPECT_EQ(TOakSystemImageList::GetFileType(u".abc"), u"Type 1");
  EXPECT_EQ(TOakSystemImageList::GetFileType(u"ab"), u"Type 2");
  EXPECT_EQ(TOakSystemImageList::GetFileType(u""), u"Type 3");
  EXPECT_EQ(TOakSystemImageList::GetFileType(u""), u"Type 3");
  EXPECT_EQ(script.Calls.size(), 3u);
}

TEST_F(SystemImageList, FailuresAreAskedAgain) {
  TFileInfoScript script;
  script.Fails = true;
  for (int round = 1; round <= 2; ++round) {
    EXPECT_EQ(TOakSystemImageList::GetIndexFromExtension(u"abc", si_Small, false), -1);
    EXPECT_EQ(TOakSystemImageList::GetFileType(u"abc"), u"");
    EXPECT_EQ(TOakSystemImageList::GetFolderIconNumber(false), -1);
    EXPECT_EQ(TOakSystemImageList::GetUnknownFileIconNumber(), -1);
    EXPECT_EQ(script.Calls.size(), 4u * static_cast<unsigned>(round));
  }
  script.Fails = false;
  EXPECT_EQ(TOakSystemImageList::GetIndexFromExtension(u"abc", si_Small, false), 9);
  EXPECT_EQ(TOakSystemImageList::GetFileType(u"abc"), u"Type 10");
  EXPECT_EQ(TOakSystemImageList::GetFolderIconNumber(false), 11);
  EXPECT_EQ(TOakSystemImageList::GetUnknownFileIconNumber(), 12);
  // Folder and unknown file are kept too, and the latter is an extension that nobody has.
  EXPECT_EQ(TOakSystemImageList::GetFolderIconNumber(false), 11);
  EXPECT_EQ(TOakSystemImageList::GetUnknownFileIconNumber(), 12);
  EXPECT_EQ(script.Calls.size(), 12u);
  EXPECT_EQ(script.Calls.back().Name, u"test.lxvbf_unknown_extension");
}

TEST_F(SystemImageList, ThreadsShareWhatOneAsked) {
  constexpr int threadCount = 8, extensions = 60;
  std::atomic<int> asked{0};
  const auto original = Api().SHGetFileInfoW.Function();
  const TScopedApi counted(Api().SHGetFileInfoW, [&](LPCWSTR name, DWORD attributes,
                                                     SHFILEINFOW* info, UINT size, UINT flags) {
    asked.fetch_add(1);
    return original(name, attributes, info, size, flags);
  });
  std::atomic<int> started{0};
  std::vector<std::thread> threads;
  std::vector<std::vector<int>> icons(threadCount);
  std::vector<TStringArray> types(threadCount);
  for (std::size_t t = 0; t < threadCount; ++t)
    threads.emplace_back([&, t] {
      const TComApartment apartment;
      for (started.fetch_add(1); started.load() < threadCount;) std::this_thread::yield();
      for (int i = 0; i < extensions; ++i) {
        const TString extension = u".ext" + IntToStr(i);
        icons[t].push_back(TOakSystemImageList::GetIndexFromExtension(extension, si_Small, false));
        types[t].push_back(TOakSystemImageList::GetFileType(extension));
        TOakSystemImageList::GetUnknownFileIconNumber();
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(asked.load(), extensions * 2 + 1);
  for (std::size_t t = 1; t < threadCount; ++t) {
    EXPECT_EQ(icons[t], icons[0]);
    EXPECT_EQ(types[t], types[0]);
  }
}

TEST_F(SystemImageList, ShellMayRunMessagesThatAskAgain) {
  TFileInfoScript script;
  int inner = 0;
  script.OnCall = [&] {
    script.OnCall = nullptr;
    inner = TOakSystemImageList::GetIndexFromExtension(u"inner", si_Small, false);
  };
  const int outer = TOakSystemImageList::GetIndexFromExtension(u"outer", si_Small, false);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromExtension(u"inner", si_Small, false), inner);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromExtension(u"outer", si_Small, false), outer);
  EXPECT_EQ(script.Calls.size(), 2u);
}

TEST_F(SystemImageList, ItemsAreAskedEachTimeAndQuietly) {
  std::vector<UINT> modes;
  TScopedApi mode(Api().SetErrorMode, [&](UINT value) {
    modes.push_back(value);
    return 4u;
  });
  TFileInfoScript script;
  std::size_t setBefore = 0;
  script.OnCall = [&] { setBefore = modes.size(); };
  const Ref<IItemIdList> desktop = TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromItemIdList(desktop, si_Small, false), 1);
  EXPECT_EQ(modes, (std::vector<UINT>{1, 4})) << "critical errors off, then as it was";
  EXPECT_EQ(setBefore, 1u);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromItemIdList(desktop, si_Small, false), 2);
  EXPECT_EQ(TOakSystemImageList::GetSpecialFolderIcon(SF_DESKTOP), 3);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromItemIdList(nullptr, si_Small, false), -1);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromItemIdList(
                TOakItemIdList::CreateInvalidWithPath(u"C:\\gone"), si_Small, false),
            -1);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromPath(u""), -1);
  EXPECT_EQ(TOakSystemImageList::GetIndexFromPathByExt(u""), -1);
  EXPECT_EQ(script.Calls.size(), 3u);
}

// --- lists -----------------------------------------------------------------------------
TEST_F(SystemImageList, SizesOfTheSystem) {
  const int small = TOakImageListSizeHelper::GetSize(si_SysSmall);
  const int large = TOakImageListSizeHelper::GetSize(si_Large);
  const int extra = TOakImageListSizeHelper::GetSize(si_ExtraLarge);
  const int jumbo = TOakImageListSizeHelper::GetSize(si_Jumbo);
  EXPECT_LT(small, large);
  EXPECT_LT(large, extra);
  EXPECT_LT(extra, jumbo);
  const std::pair<int, TOakImageListSize> cases[] = {
      {1, si_SysSmall},           {small, si_SysSmall},
      {small + 1, si_Large},      {large, si_Large},
      {large + 1, si_ExtraLarge}, {extra, si_ExtraLarge},
      {extra + 1, si_ExtraLarge}, {jumbo - 1, si_ExtraLarge},
      {jumbo, si_Jumbo},          {9999, si_Jumbo}};
  for (const auto& [pixels, size] : cases) {
    EXPECT_EQ(TOakSystemImageList::PixelsToSize(pixels), size) << pixels;
    EXPECT_EQ(&TOakSystemImageList::GetInstance(pixels), &TOakSystemImageList::GetInstance(size));
  }
  for (const TOakImageListSize size : {si_Large, si_Small, si_ExtraLarge, si_SysSmall, si_Jumbo}) {
    TOakSystemImageList& list = TOakSystemImageList::GetInstance(size);
    EXPECT_EQ(list.GetSize(), size);
    EXPECT_EQ(list.GetWidth(), TOakImageListSizeHelper::GetSize(size));
    EXPECT_EQ(list.GetBkColor(), TColor{0x1FFFFFFF});
    EXPECT_EQ(list.GetDrawingStyle(), dsTransparent);
    EXPECT_TRUE(list.GetShareImages());
    EXPECT_GT(list.GetCount(), TOakSystemImageList::GetFolderIconNumber());
  }
  for (const TOakImageListSize size : {si_Large, si_Small}) {
    SHFILEINFOW info{};
    const DWORD_PTR handle = Api().SHGetFileInfoW(
        W(u"a.txt"), FILE_ATTRIBUTE_NORMAL, &info, sizeof info,
        SHGFI_SYSICONINDEX | SHGFI_USEFILEATTRIBUTES | (size == si_Small ? SHGFI_SMALLICON : 0u));
    EXPECT_EQ(reinterpret_cast<DWORD_PTR>(TOakSystemImageList::GetInstance(size).GetHandle()),
              handle)
        << "the handle that comes with file infos";
  }
  testkit::TScopedHost host;
  Host().PixelsPerInch = [] { return 96; };
  EXPECT_EQ(&TOakSystemImageList::GetInstance(si_FreeScaled),
            &TOakSystemImageList::GetInstance(16));
  EXPECT_EQ(TOakImageListSizeHelper::GetSize(si_FreeScaled), extra);
}

TEST_F(SystemImageList, FreeScaledNeedsPixels) {
  EXPECT_EQ(
      MessageOf<EInvalidOperation>([] { const TOakSystemImageList list(nullptr, si_FreeScaled); }),
      u"Use different constructor to create a freescaled imageList.");
  TOakSystemImageList list;
  EXPECT_EQ(list.GetSize(), si_Small);
  EXPECT_THROW(list.SetSize(si_FreeScaled), EInvalidOperation);
  list.SetSize(si_Jumbo);
  EXPECT_EQ(list.GetWidth(), TOakImageListSizeHelper::GetSize(si_Jumbo));
  EXPECT_THROW(list.Add(TBitmap(4, 4)), EInvalidOperation) << "the images are the system's";
}

/// Whether a picture has anything in it.
bool IsSeen(const TBitmap& bitmap) {
  for (int y = 0; y < bitmap.GetHeight(); ++y)
    for (int x = 0; x < bitmap.GetWidth(); ++x)
      if (AlphaOf(bitmap.ScanLine(y)[x])) return true;
  return false;
}

TEST_F(SystemImageList, ScalesToAnySizeAndDensity) {
  const int folder = TOakSystemImageList::GetFolderIconNumber();
  TOakSystemImageList list(nullptr, 20);
  EXPECT_EQ(list.GetSize(), si_FreeScaled);
  int changes = 0;
  list.OnChange = [&](TObject*) { ++changes; };
  TBitmap icon;
  const auto expectIcons = [&](int pixels) {
    EXPECT_EQ(list.GetWidth(), pixels);
    ASSERT_TRUE(list.GetBitmap(folder, icon));
    EXPECT_EQ(icon.GetWidth(), pixels);
    EXPECT_EQ(icon.GetHeight(), pixels);
    EXPECT_TRUE(IsSeen(icon));
  };
  expectIcons(20);
  list.ChangeScale(144, 96);
  expectIcons(30);
  list.Scale(folder);
  expectIcons(30);
  list.ScaleAll();
  expectIcons(30);
  EXPECT_EQ(changes, 3);
  list.ChangeScale(96, 96);
  list.ChangeScale(0, 96);
  list.ChangeScale(96, -1);
  EXPECT_EQ(changes, 3);
  list.ChangeScale(100000, 1);
  EXPECT_EQ(list.GetWidth(), 1024);
  list.ChangeScale(1, 100000);
  EXPECT_EQ(list.GetWidth(), 1);
  EXPECT_FALSE(list.GetBitmap(list.GetCount(), icon));
  EXPECT_FALSE(list.GetBitmap(-1, icon));

  TOakSystemImageList dense(nullptr, si_Small, 168);
  EXPECT_EQ(dense.GetSize(), si_Small);
  EXPECT_EQ(dense.GetWidth(), 28);
  dense.ChangeScale(96, 168);
  EXPECT_EQ(dense.GetWidth(), 16);
  TOakSystemImageList plain(nullptr, si_Small);
  const int width = plain.GetWidth();
  plain.ChangeScale(2, 1);
  EXPECT_EQ(plain.GetWidth(), width) << "that of the system follows the system";
}

TEST_F(SystemImageList, PicturesOfIcons) {
  TOakSystemImageList& list = TOakSystemImageList::GetInstance(si_Large);
  const int folder = TOakSystemImageList::GetFolderIconNumber();
  const int side = list.GetWidth();
  TBitmap icon;
  ASSERT_TRUE(list.GetBitmap(folder, icon));

  // In the middle, as large as it is.
  const TBitmap wide = list.GetAsBitmap(folder, side + 20, side + 10);
  EXPECT_EQ(wide.GetSize(), (TSize{side + 20, side + 10}));
  TBitmap middle(side, side, afPremultiplied);
  middle.CopyRect(middle.GetRect(), wide, {10, 5, 10 + side, 5 + side});
  EXPECT_TRUE(middle.SameContents(icon));
  EXPECT_EQ(AlphaOf(wide.ScanLine(0)[0]), 0u);

  // Smaller where it does not fit, on a colour, in a frame.
  const TBitmap narrow = list.GetAsBitmap(folder, 9, 40, clRed, 0xC0C0C0);
  EXPECT_EQ(narrow.GetAlphaFormat(), afIgnored);
  EXPECT_EQ(narrow.GetPixel(8, 39), TColor{0xC0C0C0});
  EXPECT_EQ(narrow.GetPixel(4, 5), clRed);
  EXPECT_NE(narrow.GetPixel(4, 20), clRed);
  EXPECT_TRUE(list.GetAsBitmap(folder, 0, 8).IsEmpty());
  EXPECT_TRUE(TOakSystemImageList::BitmapFromHBitmap(nullptr).IsEmpty());
}

TEST_F(SystemImageList, CopiesIntoOtherLists) {
  TOakSystemImageList& list = TOakSystemImageList::GetInstance(si_Large);
  const int folder = TOakSystemImageList::GetFolderIconNumber();
  TImageList own(nullptr, 11, 11);
  own.SetColorDepth(cd8Bit);
  EXPECT_EQ(list.CopySystemImageTo(folder, own), 0);
  EXPECT_EQ(list.CopySystemImageTo(list.GetCount(), own), -1);
  TBitmap copy;
  ASSERT_TRUE(own.GetBitmap(0, copy));
  EXPECT_TRUE(IsSeen(copy));
  TOakSystemImageList::ConvertTo32BitImageList(own);
  EXPECT_EQ(own.GetColorDepth(), cd32Bit);
  EXPECT_EQ(own.GetCount(), 1) << "the image stays";
  EXPECT_THROW(list.CopySystemImageTo(folder, TOakSystemImageList::GetInstance(si_Small)),
               EInvalidOperation);
}

// --- systems that lack something -----------------------------------------------------------
TEST_F(SystemImageList, WithoutListsOfTheSystem) {
  testkit::TScopedHost host;
  Host().PixelsPerInch = [] { return 144; };
  {
    const TScopedApi missing(Api().SHGetImageList, nullptr);
    EXPECT_EQ(TOakImageListSizeHelper::GetSize(si_Small), 24);
    EXPECT_EQ(TOakImageListSizeHelper::GetSize(si_FreeScaled), 72);
    EXPECT_EQ(TOakImageListSizeHelper::GetSize(si_Jumbo), 256);
    const TOakSystemImageList list(nullptr, si_ExtraLarge);
    TBitmap icon;
    EXPECT_FALSE(list.GetBitmap(list.GetCount(), icon));
  }
  {
    // No jumbo icons: the next size takes their place.
    const auto original = Api().SHGetImageList.Function();
    const TScopedApi old(Api().SHGetImageList, [&](int size, REFIID iid, void** out) -> HRESULT {
      *out = nullptr;
      return size < 4 ? original(size, iid, out) : E_INVALIDARG;
    });
    const TOakSystemImageList list(nullptr, si_Jumbo);
    EXPECT_EQ(list.GetWidth(), TOakImageListSizeHelper::GetSize(si_ExtraLarge));
  }
  const TScopedApi failing(Api().SHGetImageList, [](int, REFIID, void** out) -> HRESULT {
    *out = nullptr;
    return E_FAIL;
  });
  TOakSystemImageList list(nullptr, 20);
  EXPECT_EQ(list.GetCount(), 0);
  list.ScaleAll();
  list.Scale(0);
  EXPECT_TRUE(list.GetAsBitmap(0, 8, 8).IsEmpty());
}

TEST_F(SystemImageList, FaultSweep) {
  TTestFolder folder;
  folder.MakeFile(u"a.txt");
  const Ref<IItemIdList> item = TOakItemIdList::Create(folder.Path(u"a.txt"));
  ASSERT_FALSE(item->IsInvalid());
  const int failed = testkit::SweepFaults(
      [&] {
        TOakSystemImageList::ForgetIcons();
        TOakSystemImageList list(nullptr, 20);
        const int index = TOakSystemImageList::GetIndexFromItemIdList(item, si_Small, false);
        TBitmap icon;
        list.GetBitmap(index, icon);
        list.GetAsBitmap(index, 30, 30);
        TOakSystemImageList::GetFolderIconNumber();
        TOakSystemImageList::GetUnknownFileIconNumber();
        TOakSystemImageList::GetFileType(u"txt");
        TOakSystemImageList::GetInstance(si_Small);
      },
      [&](const std::string& call) {
        EXPECT_GE(TOakSystemImageList::GetIndexFromExtension(u"txt"), 0) << call;
        EXPECT_GT(TOakSystemImageList::GetInstance(si_Small).GetCount(), 0) << call;
      });
  EXPECT_GT(failed, 8);
}

}  // namespace
}  // namespace oak::tests
