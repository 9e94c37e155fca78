// Properties of file-system objects, read and written.
#include <sys/xattr.h>

#include "NativeTree.h"
#include "oak/base/DateTime.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/FileKinds.h"
#include "oak/platform/portable/FileProperties.h"
#include "oak/platform/portable/PortableConfig.h"

namespace oak::tests {
namespace {

TPropVariant Get(const Ref<IFolderSource>& source, TStringView name, REFPROPERTYKEY key,
                 HRESULT expected = S_OK) {
  TPropVariant value;
  EXPECT_EQ(source->GetProperty(Parse(source, name).Get(), key, value.Put()), expected);
  return value;
}

HRESULT Set(const Ref<IFolderSource>& source, TStringView name, REFPROPERTYKEY key,
            const TPropVariant& value) {
  return source->SetProperty(Parse(source, name).Get(), key, value);
}

TString Text(const TPropVariant& value) { return PropVariantToText(value); }

TEST(FileProperties, OfNames) {
  const TNativeTree tree;
  tree.File("Photo.one.JPG", "12345");
  tree.File("none");
  tree.File("Mr. Smith");
  tree.Folder("folder.txt");
  tree.Link("link", "Photo.one.JPG");
  tree.Link("broken", "nowhere");
  const auto source = tree.Source();
  const struct {
    TStringView Name;
    const PROPERTYKEY& Key;
    TStringView Expected;
  } cases[] = {{u"link", PKEY_Size, u"5"},
               {u"none", PKEY_Link_TargetParsingPath, u""},
               {u"Photo.one.JPG", PKEY_FileExtension, u".JPG"},
               {u"Photo.one.JPG", PKEY_ItemTypeText, u"JPG File"},
               {u"Photo.one.JPG", PKEY_ItemType, u".JPG"},
               {u"Photo.one.JPG", PKEY_Kind, u"picture"},
               {u"Photo.one.JPG", PKEY_KindText, u"Picture"},
               {u"Photo.one.JPG", PKEY_PerceivedType, u"2"},
               {u"Photo.one.JPG", PKEY_Size, u"5"},
               {u"none", PKEY_FileExtension, u""},
               {u"none", PKEY_ItemTypeText, u"File"},
               {u"Mr. Smith", PKEY_ItemTypeText, u"File"},
               {u"none", PKEY_Kind, u""},
               {u"folder.txt", PKEY_FileExtension, u""},
               {u"folder.txt", PKEY_ItemTypeText, u"File folder"},
               {u"folder.txt", PKEY_Kind, u"folder"},
               {u"folder.txt", PKEY_Size, u""}};
  for (const auto& test : cases)
    EXPECT_EQ(Text(Get(source, test.Name, test.Key)), test.Expected) << ToUtf8(test.Name);
  EXPECT_EQ(Text(Get(source, u"link", PKEY_Link_TargetParsingPath)), tree.Path("Photo.one.JPG"));
  EXPECT_EQ(Get(source, u"broken", PKEY_DateModified).GetType(), VT_FILETIME);
  Get(source, u"none", PKEY_Media_Duration, Win32(ERROR_NOT_FOUND));
}

TEST(FileProperties, Dates) {
  const TNativeTree tree;
  tree.File("file");
  const auto source = tree.Source();
  const FILETIME modified = UnixToFileTime(1'000'000'000, 123456700);
  const FILETIME accessed = UnixToFileTime(-1, 0);
  EXPECT_EQ(Set(source, u"file", PKEY_DateModified, TPropVariant::From(modified)), S_OK);
  EXPECT_EQ(Set(source, u"file", PKEY_DateAccessed, TPropVariant::From(accessed)), S_OK);
  const auto ticks = [&](REFPROPERTYKEY key) {
    FILETIME time{};
    EXPECT_TRUE(TryGetFileTime(Get(source, u"file", key), time));
    return FileTimeToTicks(time);
  };
  EXPECT_EQ(ticks(PKEY_DateModified), FileTimeToTicks(modified));
  EXPECT_EQ(ticks(PKEY_ItemDate), FileTimeToTicks(modified));
  EXPECT_EQ(ticks(PKEY_DateAccessed), FileTimeToTicks(accessed));
  EXPECT_EQ(Set(source, u"file", PKEY_DateModified, TPropVariant::From(u"x")), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Set(source, u"file", PKEY_DateCreated, TPropVariant::From(modified)),
            Win32(ERROR_ACCESS_DENIED));
  EXPECT_EQ(Set(source, u"file", PKEY_Size, TPropVariant::From(1)), Win32(ERROR_ACCESS_DENIED));
}

TEST(FileProperties, AttributeBits) {
  const TNativeTree tree;
  tree.File("file");
  const auto source = tree.Source();
  const auto set = [&](DWORD bits) {
    return Set(source, u"file", PKEY_FileAttributes, TPropVariant::From(bits));
  };
  const auto mode = [&] {
    struct stat info {};
    stat(tree.Native("file").c_str(), &info);
    return info.st_mode & 0222;
  };
  EXPECT_EQ(set(FILE_ATTRIBUTE_READONLY), S_OK);
  EXPECT_EQ(mode(), 0u);
  std::int64_t bits = 0;
  ASSERT_TRUE(TryGetInt64(Get(source, u"file", PKEY_FileAttributes), bits));
  EXPECT_TRUE(bits & FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(set(FILE_ATTRIBUTE_NORMAL), S_OK);
  EXPECT_NE(mode(), 0u);
  EXPECT_EQ(set(FILE_ATTRIBUTE_HIDDEN), Win32(ERROR_NOT_SUPPORTED));
}

TEST(FileProperties, WhatPeopleWrite) {
  const TNativeTree tree;
  tree.File("file");
  if (setxattr(tree.Native("file").c_str(), "user.oak.test", "x", 1, 0) != 0 && errno == ENOTSUP) {
    EXPECT_EQ(Set(tree.Source(), u"file", PKEY_Title, TPropVariant::From(u"x")),
              Win32(ERROR_NOT_SUPPORTED));
    GTEST_SKIP() << "no extended attributes in the temporary directory";
  }
  const auto source = tree.Source();
  EXPECT_TRUE(Get(source, u"file", PKEY_Title).IsEmpty());
  EXPECT_EQ(Set(source, u"file", PKEY_Title, TPropVariant::From(u"Ein Tïtel\nzwei")), S_OK);
  EXPECT_EQ(Text(Get(source, u"file", PKEY_Title)), u"Ein Tïtel\nzwei");
  EXPECT_EQ(
      Set(source, u"file", PKEY_Keywords, TPropVariant::From(TStringArray{u"a", u" b;c ", u""})),
      S_OK);
  EXPECT_EQ(Text(Get(source, u"file", PKEY_Keywords)), u"a; b;c");
  EXPECT_EQ(Set(source, u"file", PKEY_Author, TPropVariant::From(u"One; Two")), S_OK);
  EXPECT_EQ(Get(source, u"file", PKEY_Author).Get().calpwstr.cElems, 2u);
  EXPECT_EQ(Set(source, u"file", PKEY_Rating, TPropVariant::From(99)), S_OK);
  EXPECT_EQ(Text(Get(source, u"file", PKEY_Rating)), u"99");
  EXPECT_EQ(Set(source, u"file", PKEY_Rating, TPropVariant::From(u"many")), DISP_E_TYPEMISMATCH);
  // Empty takes the property away, twice without harm.
  EXPECT_EQ(Set(source, u"file", PKEY_Title, TPropVariant()), S_OK);
  EXPECT_EQ(Set(source, u"file", PKEY_Title, TPropVariant::Null()), S_OK);
  EXPECT_TRUE(Get(source, u"file", PKEY_Title).IsEmpty());
  // Bytes that another program wrote.
  setxattr(tree.Native("file").c_str(), "user.oak.rating", "9x", 2, 0);
  EXPECT_TRUE(Get(source, u"file", PKEY_Rating).IsEmpty());
}

// What a store counts is what it answers.
TEST(FileProperties, KeysAreAnswered) {
  const TNativeTree tree;
  tree.File("file.txt");
  const auto source = tree.Source();
  const TPidl element = Parse(source, u"file.txt");
  const auto keys = source->GetPropertyKeys(element.Get());
  EXPECT_GE(keys.size(), 20u);
  for (const PROPERTYKEY& key : keys) {
    TPropVariant value;
    EXPECT_EQ(source->GetProperty(element.Get(), key, value.Put()), S_OK) << key.pid;
  }
}

}  // namespace
}  // namespace oak::tests
