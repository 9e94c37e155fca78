#include "oak/framework/headless/HeadlessClipboard.h"

#include <gtest/gtest.h>

#include "oak/framework/Forms.h"
#include "oak/platform/portable/PortableMemory.h"
#include "testkit/HeadlessForms.h"
#include "tests/EmptyObjects.h"

namespace oak::tests {
namespace {

/// Data with a text, or with none.
class TTextData : public TEmptyDataObject<> {
 public:
  explicit TTextData(TString text, bool hasText = true)
      : fText(std::move(text)), fHasText(hasText) {}
  HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) override {
    if (!fHasText || format->cfFormat != CF_UNICODETEXT) return E_NOTIMPL;
    *medium = {};
    medium->tymed = TYMED_HGLOBAL;
    medium->hGlobal = PortableGlobalCopy(fText.data(), fText.size() * sizeof(char16_t));
    return S_OK;
  }

 private:
  const TString fText;
  const bool fHasText;
};

TEST(HeadlessClipboard, WhatWasCopiedLastIsThere) {
  testkit::THeadlessScreen screen([](const std::string& text) { ADD_FAILURE() << text; });
  const auto copy = [](TString text, bool hasText = true) {
    SetPortableClipboard(Ref<IDataObject>::Adopt(new TTextData(std::move(text), hasText)));
  };
  EXPECT_FALSE(Clipboard().HasText());
  Clipboard().SetAsText(u"ours");
  EXPECT_EQ(Clipboard().GetAsText(), u"ours");
  TString seen;
  ASSERT_TRUE(PortableClipboard());
  EXPECT_TRUE(TextOfData(*PortableClipboard(), &seen));  // the shell has it too
  EXPECT_EQ(seen, u"ours");
  copy(u"the shell's");
  EXPECT_EQ(Clipboard().GetAsText(), u"the shell's");  // without an end of its own
  copy(TString(u"cut\0here", 8));
  EXPECT_EQ(Clipboard().GetAsText(), u"cut");
  Clipboard().SetAsText(u"again ours");
  EXPECT_EQ(Clipboard().GetAsText(), u"again ours");
  copy(u"", false);  // files
  EXPECT_FALSE(Clipboard().HasText());
  SetPortableClipboard(nullptr);
  EXPECT_FALSE(Clipboard().HasText());
}

// A desktop takes its own text along, and nobody else's.
TEST(HeadlessClipboard, TheEndOfADesktop) {
  for (const bool shell : {false, true}) {
    {
      testkit::THeadlessScreen screen([](const std::string& text) { ADD_FAILURE() << text; });
      Clipboard().SetAsText(u"ours");
      if (shell) SetPortableClipboard(MakeTextData(u"the shell's"));
    }
    EXPECT_EQ(static_cast<bool>(PortableClipboard()), shell);
  }
  SetPortableClipboard(nullptr);
}

}  // namespace
}  // namespace oak::tests
