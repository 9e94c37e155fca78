// Headers of picture files, and what the shell tells of pictures.
#include <sys/stat.h>

#include <sstream>

#include "oak/base/Guid.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/ImageHeader.h"
#include "oak/platform/portable/ShellHooks.h"
#include "tests/platform/portable/ShellFixture.h"

namespace oak {
namespace {

// --- making pictures ---------------------------------------------------------------

std::string Little(std::uint32_t number, int size) {
  std::string bytes;
  for (; size-- > 0; number >>= 8) bytes += static_cast<char>(number);
  return bytes;
}
std::string Big(std::uint32_t number, int size) {
  const std::string bytes = Little(number, size);
  return {bytes.rbegin(), bytes.rend()};
}
std::string PngChunk(const std::string& kind, const std::string& data) {
  return Big(static_cast<std::uint32_t>(data.size()), 4) + kind + data + "crc.";
}
std::string Png(std::uint32_t width, std::uint32_t height, int kind, std::uint32_t dotsPerMetre) {
  return "\x89PNG\r\n\x1a\n" +
         PngChunk("IHDR", Big(width, 4) + Big(height, 4) + "\x08" + Big(kind, 1) + Big(0, 3)) +
         PngChunk("gAMA", "1234") +
         PngChunk("pHYs", Big(dotsPerMetre, 4) + Big(2 * dotsPerMetre, 4) + "\1") +
         PngChunk("IDAT", "");
}
std::string Segment(int marker, const std::string& data) {
  return "\xFF" + Big(marker, 1) + Big(static_cast<std::uint32_t>(data.size()) + 2, 2) + data;
}
std::string Jpeg(const std::string& density) {
  return "\xFF\xD8" + density + Segment(0xC4, "table") + "\xFF\xFF" +  // fill bytes
         Segment(0xC2, "\x08" + Big(480, 2) + Big(640, 2) + "\3") + "\xFF\xDA";
}
std::string Riff(const std::string& kind, const std::string& data) {
  const auto size = static_cast<std::uint32_t>(data.size());
  return "RIFF" + Little(size + 12, 4) + "WEBP" + kind + Little(size, 4) + data;
}
// The density of an Exif block and the header of a file, in the byte order of `number`.
std::string Tiff(std::string (*number)(std::uint32_t, int)) {
  const auto entry = [&](std::uint32_t tag, int type, std::uint32_t count, std::string value) {
    return number(tag, 2) + number(static_cast<std::uint32_t>(type), 2) + number(count, 4) + value +
           std::string(4 - value.size(), '\0');
  };
  const std::string values = number(8, 2) + number(8, 2) + number(8, 2) + number(3000, 4) +
                             number(10, 4) + number(118, 4) + number(1, 4);
  return (number == Big ? "MM" : "II") + number(42, 2) + number(8, 4) + number(7, 2) +
         entry(256, 4, 1, number(70000, 4)) + entry(257, 3, 1, number(200, 2)) +
         entry(258, 3, 3, number(98, 4)) + entry(277, 3, 1, number(3, 2)) +
         entry(282, 5, 1, number(104, 4)) + entry(283, 5, 1, number(112, 4)) +
         entry(296, 3, 1, number(3, 2)) + number(0, 4) + values;
}
std::string Icon(int kind, const std::string& second) {
  return Little(0, 2) + Little(kind, 2) + Little(2, 2) + Little(0x1010, 4) + Little(8 << 16, 4) +
         Little(40, 4) + Little(38, 4) + Little(0, 4) + Little(32 << 16, 4) + Little(40, 4) +
         Little(38, 4) + second;
}
std::string Bitmap(std::int32_t height) {
  return "BM" + Little(0, 12) + Little(40, 4) + Little(31, 4) +
         Little(static_cast<std::uint32_t>(height), 4) + Little(1, 2) + Little(24, 2) +
         Little(0, 8) + Little(2835, 4) + Little(2835, 4);
}
const std::string Core = Little(12, 4) + Little(7, 2) + Little(5, 2) + Little(1, 2) + Little(4, 2);

// --- the formats -------------------------------------------------------------------

std::optional<TImageHeader> Read(std::string_view bytes) {
  return ReadImageHeader([&](std::uint64_t offset, std::span<std::uint8_t> room) {
    const std::string_view rest = bytes.substr(std::min<std::uint64_t>(offset, bytes.size()));
    return rest.copy(reinterpret_cast<char*>(room.data()), room.size());
  });
}
std::string Told(const std::optional<TImageHeader>& header) {
  std::ostringstream text;
  if (header)
    text << header->Width << 'x' << header->Height << ' ' << header->BitDepth << ' '
         << header->HorizontalResolution << '/' << header->VerticalResolution;
  return text.str();
}

TEST(ImageHeader, FormatsWholeAndCutOff) {
  const std::string jfif("JFIF\0\1\2", 7), exif("Exif\0\0", 6);
  const struct {
    std::string Bytes;
    const char* Expected;
  } cases[] = {
      {Png(1024, 768, 6, 5000), "1024x768 32 127/254"},
      {Png(1024, 0, 6, 5000), ""},
      {Png(0x80000000u, 1, 2, 0), ""},
      {"GIF89a" + Little(300, 2) + Little(200, 2) + "\x83", "300x200 8 0/0"},
      {Bitmap(-17), "31x17 24 72.009/72.009"},
      {Bitmap(INT32_MIN), ""},
      {"BM" + Little(0, 12) + Core, "7x5 4 0/0"},
      {"BMW 320i, as it was written down in a text of some length", ""},
      {Jpeg(Segment(0xE0, jfif + "\1" + Big(300, 2) + Big(150, 2))), "640x480 24 300/150"},
      {Jpeg(Segment(0xE0, jfif + "\2" + Big(100, 2) + Big(50, 2))), "640x480 24 254/127"},
      {Jpeg(Segment(0xE0, jfif + Big(0, 1) + Big(1, 4)) + Segment(0xE1, exif + Tiff(Big))),
       "640x480 24 762/299.72"},
      {Riff("VP8 ", "..." + ("\x9D\x01\x2A" + Little(0x4000 | 176, 2)) + Little(144, 2)),
       "176x144 24 0/0"},
      {Riff("VP8L", "\x2F" + Little(99 | 49 << 14 | 1 << 28, 4)), "100x50 32 0/0"},
      {Riff("VP8X", Little(0x10, 4) + Little(69999, 3) + Little(9, 3)), "70000x10 32 0/0"},
      {Tiff(Little), "70000x200 24 762/299.72"},
      {Tiff(Big), "70000x200 24 762/299.72"},
      {Little(2 << 16, 18), ""},  // begins as a cursor does
      {Icon(1, "...."), "256x256 32 0/0"},
      {Icon(1, Png(512, 400, 2, 0)), "512x400 24 0/0"},
      {Icon(2, Little(40, 4) + Little(0, 10) + Little(4, 2)), "256x256 4 0/0"},
      {"P6 # by hand\n#\n 20\t10 255\n", "20x10 24 0/0"},
  };
  for (const auto& test : cases) {
    const auto whole = Read(test.Bytes);
    EXPECT_EQ(Told(whole), test.Expected);
    for (std::size_t size = 0; size < test.Bytes.size(); ++size) {
      const auto part = Read(test.Bytes.substr(0, size));
      if (!part || test.Bytes[0] == '\0') continue;  // an icon's table tells of what was cut off
      ASSERT_TRUE(whole);
      EXPECT_EQ(part->Width, whole->Width);
      EXPECT_EQ(part->Height, whole->Height);
      EXPECT_LE(part->BitDepth, whole->BitDepth);
      const double dots = part->HorizontalResolution;
      EXPECT_TRUE(dots == 0 || dots == whole->HorizontalResolution) << dots;
    }
  }
}

// Files without end, made of one piece again and again.
TEST(ImageHeader, WorkIsBounded) {
  const struct {
    std::string Start, Piece;
  } cases[] = {{"\xFF\xD8", Segment(0xE1, std::string("Exif\0\0MM\0*\0\0\0\x8", 14))},
               {Png(0, 1, 0, 0).substr(0, 33), PngChunk("tEXt", "")},
               {std::string("MM\0*", 4) + Big(8, 4), "\xFF"},
               {std::string("\0\0\1\0\xFF\xFF", 6), std::string(12, '\1') + Big(0xFFFFFFFF, 4)}};
  for (const auto& test : cases) {
    int reads = 0;
    static_cast<void>(ReadImageHeader([&](std::uint64_t offset, std::span<std::uint8_t> room) {
      for (std::uint8_t& byte : room) {
        const std::size_t at = offset++, length = test.Start.size();
        const char next =
            at < length ? test.Start[at] : test.Piece[(at - length) % test.Piece.size()];
        byte = static_cast<std::uint8_t>(next);
      }
      ++reads;
      return room.size();
    }));
    EXPECT_LE(reads, 256) << test.Piece;
  }
}

// --- the shell ---------------------------------------------------------------------

class TShellPictures : public TShellTest {
 protected:
  void SetUp() override {
    TShellTest::SetUp();
    MakeFile("Dir/a.PNG", Png(1024, 768, 6, 3780));
    MakeFile("Dir/a.txt", Png(1024, 768, 6, 3780));
    MakeFile("Dir/text.png", "no picture");
    MakeDirectory("Dir/folder.png");
    std::filesystem::create_symlink("a.PNG", fRoot / "c/Dir/link.png");
    std::filesystem::create_symlink("nowhere", fRoot / "c/Dir/broken.png");
    ASSERT_EQ(mkfifo((fRoot / "c/Dir/pipe.png").c_str(), 0600), 0);
  }
  /// Text of the column of a property, as a list shows it.
  TString Column(TStringView name, const PROPERTYKEY& wanted) {
    const auto folder = Folder(u"C:\\Dir");
    const TPidl list = Parse(u"C:\\Dir\\" + TString(name));
    PROPERTYKEY key{};
    UINT column = 0;
    while (folder->MapColumnToSCID(column, &key) == S_OK && !TPropertyKeyEqual{}(key, wanted))
      ++column;
    SHCOLSTATEF state = 0;
    EXPECT_EQ(folder->GetDefaultColumnState(column, &state), S_OK);
    EXPECT_EQ(state & (SHCOLSTATE_ONBYDEFAULT | SHCOLSTATE_SLOW), SHCOLSTATE_SLOW);
    SHELLDETAILS details{};
    TTaskMemory<WCHAR> text;
    EXPECT_EQ(folder->GetDetailsOf(Api().ILFindLastID(list.Get()), column, &details), S_OK);
    EXPECT_EQ(Api().StrRetToStrW(&details.str, nullptr, text.Put()), S_OK);
    return FromW(text.Get());
  }
};

TEST_F(TShellPictures, ColumnsValuesAndReport) {
  Ref<IPropertyStore> store;
  ASSERT_EQ(Item(u"C:\\Dir\\link.png")
                ->GetPropertyStore(GPS_DEFAULT, IID_IPropertyStore, store.PutVoid()),
            S_OK);
  const struct {
    const PROPERTYKEY& Key;
    VARTYPE Type;
    TStringView Text;
  } cases[] = {{PKEY_Image_Dimensions, VT_LPWSTR, u"1024 x 768"},
               {PKEY_Image_HorizontalSize, VT_UI4, u"1024 pixels"},
               {PKEY_Image_VerticalSize, VT_UI4, u"768 pixels"},
               {PKEY_Image_BitDepth, VT_UI4, u"32"},
               {PKEY_Image_HorizontalResolution, VT_R8, u"96 dpi"},
               {PKEY_Image_VerticalResolution, VT_R8, u"192 dpi"}};
  TPropVariant value;
  for (const auto& test : cases) {
    EXPECT_EQ(Column(u"a.PNG", test.Key), test.Text);
    EXPECT_EQ(store->GetValue(test.Key, value.Put()), S_OK);
    EXPECT_EQ(value.GetType(), test.Type) << Show(test.Text);
  }
  for (const TStringView name : {u"a.txt", u"text.png", u"folder.png", u"broken.png", u"pipe.png"})
    EXPECT_EQ(Column(name, PKEY_Image_Dimensions), u"") << Show(name);
  Ref<IDataObject> data;
  ASSERT_EQ(Item(u"C:\\Dir\\a.PNG")
                ->BindToHandler(nullptr, BHID_DataObject, IID_IDataObject, data.PutVoid()),
            S_OK);
  ASSERT_EQ(Api().SHMultiFileProperties(data.Get(), 0), S_OK);
  EXPECT_NE(LastPropertyReport().find(u"\r\nDimensions: 1024 x 768\r\nBit depth: 32\r\n"),
            TString::npos);
  std::filesystem::remove(fRoot / "c/Dir/link.png");
  EXPECT_EQ(store->GetValue(PKEY_Image_Dimensions, value.Put()),
            HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
}

}  // namespace
}  // namespace oak
