// Any bytes as an ini file. They are written as they were read; a change leaves
// every other value as it was, in memory and in the file.
#include <cstdlib>

#include "FuzzInput.h"
#include "oak/base/Exceptions.h"
#include "oak/framework/IniFile.h"
#include "oak/framework/StringList.h"

using namespace oak;

namespace {

struct TEntry {
  TString Section, Key, Value;
};

std::vector<TEntry> EntriesOf(const TIniFile& ini) {
  std::vector<TEntry> entries;
  TStringList sections;
  ini.ReadSections(sections);
  for (const TString& section : sections) {
    TStringList keys;
    ini.ReadSection(section, keys);
    for (const TString& key : keys) {
      if (!ini.ValueExists(section, key)) std::abort();
      entries.push_back({section, key, ini.ReadString(section, key)});
    }
  }
  return entries;
}

/// The file as another program finds it.
struct TReread : TIniFile {
  explicit TReread(const TIniFile& ini) : TIniFile({}, TEncoding::UTF8()) {
    const std::string bytes = ini.GetBytes();
    SetBytes(bytes);
    if (!bytes.empty() && GetBytes() != bytes) std::abort();
  }
};

/// Whether each entry, but those that `changed` tells, is there with its value.
template <class TChanged>
void Check(const TIniFile& ini, const std::vector<TEntry>& entries, TChanged&& changed) {
  const TReread again(ini);
  for (const TEntry& entry : entries) {
    if (changed(entry)) continue;
    if (ini.ReadString(entry.Section, entry.Key, u"?") != entry.Value) std::abort();
    if (again.ReadString(entry.Section, entry.Key, u"?") != entry.Value) std::abort();
  }
}

void TryWrite(TIniFile& ini, const TString& section, const TString& key, const TString& value) {
  const auto entries = EntriesOf(ini);
  try {
    ini.WriteString(section, key, value);
  } catch (const EArgumentException&) {
    return;
  }
  if (ini.ReadString(section, key, u"?") != value) std::abort();
  if (TReread(ini).ReadString(section, key, u"?") != value) std::abort();
  const bool isLonger = key.find(u'=') != TString::npos;
  Check(ini, entries, [&](const TEntry& entry) {
    if (!SameText(entry.Section, Trim(section))) return false;
    return SameText(entry.Key, Trim(key)) || (isLonger && StartsText(entry.Key, Trim(key)));
  });
}

void TryDelete(TIniFile& ini, const TEntry& target) {
  auto entries = EntriesOf(ini);
  ini.DeleteKey(target.Section, target.Key);
  if (TReread(ini).ValueExists(target.Section, target.Key)) std::abort();
  Check(ini, entries, [&](const TEntry& entry) {
    return SameText(entry.Section, target.Section) && SameText(entry.Key, target.Key);
  });
  entries = EntriesOf(ini);
  ini.EraseSection(target.Section);
  if (TReread(ini).SectionExists(target.Section)) std::abort();
  Check(ini, entries, [&](const TEntry& entry) { return SameText(entry.Section, target.Section); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  TIniFile ini({}, TEncoding::UTF8());
  ini.SetBytes(bytes);
  if (size > 0 && ini.GetBytes() != bytes) std::abort();
  const auto entries = EntriesOf(ini);
  const auto [first, second] = fuzz::ToTwoTexts(data, size);
  TryWrite(ini, u"fuzz", u"key", first.substr(0, 100));
  TryWrite(ini, first.substr(0, 20), second.substr(0, 20), second);
  const std::size_t count = entries.size();
  if (count == 0) return 0;
  TryWrite(ini, entries[count / 2].Section, entries[count / 2].Key, first);
  TryWrite(ini, entries[0].Section, u"a=b=c", u" x ");
  TryDelete(ini, entries[count - 1]);
  return 0;
}
