#include "oak/framework/IniFile.h"

#include <limits>

#include "oak/framework/IniDocument.h"
#include "oak/framework/Strings.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

[[noreturn]] void RaiseName(TStringView parameter, TStringView fault) {
  throw EArgumentException(TString(parameter) + u" must not " + TString(fault) + u".");
}

void CheckOneLine(TStringView parameter, TStringView text) {
  if (text.find_first_of(u"\r\n") != TStringView::npos)
    RaiseName(parameter, u"contain line breaks");
}

TString CheckedSection(TStringView section) {
  CheckOneLine(u"section", section);
  TString name = Trim(section);
  if (name.empty()) RaiseName(u"section", u"be empty");
  return name;
}

TString CheckedKey(TStringView key) {
  CheckOneLine(u"key", key);
  TString name = Trim(key);
  if (name.empty()) RaiseName(u"key", u"be empty");
  if (name.front() == u'[' || name.front() == u';' || name.front() == u'=')
    RaiseName(u"key", u"begin with \"[\", \";\" or \"=\"");
  return name;
}

int DigitOf(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  const char16_t letter = LowCase(c);
  return letter >= u'a' && letter <= u'f' ? letter - u'a' + 10 : 99;
}

/// A number without sign up to `limit`; false if the text is none.
bool ParseDigits(TStringView text, int base, std::uint64_t limit, std::uint64_t& value) {
  value = 0;
  for (const char16_t c : text) {
    const int digit = DigitOf(c);
    if (digit >= base) return false;
    value = value * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
    if (value > limit) return false;
  }
  return !text.empty();
}

bool ParseInteger(const TString& trimmed, int& result) {
  TStringView text = trimmed;
  std::uint64_t value = 0;
  const std::size_t prefix = text.starts_with(u'$') ? 1 : StartsText(u"0x", text) ? 2 : 0;
  if (prefix > 0) {
    constexpr std::uint64_t limit = std::numeric_limits<std::uint32_t>::max();
    if (!ParseDigits(text.substr(prefix), 16, limit, value)) return false;
    result = static_cast<int>(static_cast<std::uint32_t>(value));
    return true;
  }
  const bool isNegative = text.starts_with(u'-');
  if (isNegative || text.starts_with(u'+')) text.remove_prefix(1);
  constexpr std::uint64_t limit = std::numeric_limits<int>::max();
  if (!ParseDigits(text, 10, limit + (isNegative ? 1 : 0), value)) return false;
  const auto number = static_cast<std::int64_t>(value);
  result = static_cast<int>(isNegative ? -number : number);
  return true;
}

std::string ReadIfThere(const TString& path) {
  try {
    return ReadFileContent(path);
  } catch (const EFileError& error) {
    const DWORD code = error.GetErrorCode();
    if (code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND) return {};
    throw;
  }
}

}  // namespace

TIniFile::TIniFile(TString fileName)
    : TIniFile(std::move(fileName), TEncoding::ANSI(), TEncoding::Unicode()) {}

TIniFile::TIniFile(TString fileName, TEncoding encoding)
    : TIniFile(std::move(fileName), encoding, encoding) {}

TIniFile::TIniFile(TString fileName, TEncoding unmarked, TEncoding created)
    : fFileName(std::move(fileName)), fDocument(std::make_unique<TIniDocument>(unmarked, created)) {
  Reload();
}

TIniFile::~TIniFile() = default;

void TIniFile::Reload() {
  fDocument->Load(ReadIfThere(fFileName));
  fModified = false;
}

void TIniFile::UpdateFile() {
  if (!fModified) return;
  ReplaceFileContent(fFileName, fDocument->Save());
  fModified = false;
}

TEncoding TIniFile::GetEncoding() const noexcept { return fDocument->Encoding(); }

TString TIniFile::GetText() const { return fDocument->Text(); }

std::string TIniFile::GetBytes() const { return fDocument->Save(); }

void TIniFile::SetBytes(std::string_view bytes) {
  fDocument->Load(bytes);
  fModified = true;
}

// --- reading --------------------------------------------------------------------

TString TIniFile::ReadString(TStringView section, TStringView key, TStringView fallback) const {
  TString value;
  return fDocument->Read(Trim(section), Trim(key), value) ? value : TString(fallback);
}

int TIniFile::ReadInteger(TStringView section, TStringView key, int fallback) const {
  int value = 0;
  return ParseInteger(Trim(ReadString(section, key)), value) ? value : fallback;
}

bool TIniFile::ReadBool(TStringView section, TStringView key, bool fallback) const {
  return ReadInteger(section, key, fallback ? 1 : 0) != 0;
}

bool TIniFile::SectionExists(TStringView section) const {
  return fDocument->HasSection(Trim(section));
}

bool TIniFile::ValueExists(TStringView section, TStringView key) const {
  TString value;
  return fDocument->Read(Trim(section), Trim(key), value);
}

void TIniFile::ReadSections(TStrings& sections) const { fDocument->ListSections(sections); }

void TIniFile::ReadSection(TStringView section, TStrings& keys) const {
  fDocument->ListSection(Trim(section), false, keys);
}

void TIniFile::ReadSectionValues(TStringView section, TStrings& values) const {
  fDocument->ListSection(Trim(section), true, values);
}

// --- writing --------------------------------------------------------------------

void TIniFile::WriteString(TStringView section, TStringView key, TStringView value) {
  const TString sectionName = CheckedSection(section);
  const TString keyName = CheckedKey(key);
  CheckOneLine(u"value", value);
  if (fDocument->Write(sectionName, keyName, value)) fModified = true;
}

void TIniFile::AppendKey(TStringView section, TStringView key) {
  const TString sectionName = CheckedSection(section);
  fDocument->Append(sectionName, CheckedKey(key) + u"=");
  fModified = true;
}

void TIniFile::WriteInteger(TStringView section, TStringView key, int value) {
  WriteString(section, key, IntToStr(value));
}

void TIniFile::WriteBool(TStringView section, TStringView key, bool value) {
  WriteString(section, key, value ? u"1" : u"0");
}

void TIniFile::EraseSection(TStringView section) {
  if (fDocument->EraseSection(Trim(section))) fModified = true;
}

void TIniFile::DeleteKey(TStringView section, TStringView key) {
  if (fDocument->DeleteKey(Trim(section), Trim(key))) fModified = true;
}

void TIniFile::Clear() { SetBytes({}); }

}  // namespace oak
