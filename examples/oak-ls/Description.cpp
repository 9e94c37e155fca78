#include "Description.h"

#include "oak/base/DateTime.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"

using namespace oak;

namespace {

constexpr std::pair<DWORD, const char*> AttributeNames[] = {
    {SFGAO_CANCOPY, "cancopy"},
    {SFGAO_CANMOVE, "canmove"},
    {SFGAO_CANLINK, "canlink"},
    {SFGAO_STORAGE, "storage"},
    {SFGAO_CANRENAME, "canrename"},
    {SFGAO_CANDELETE, "candelete"},
    {SFGAO_HASPROPSHEET, "haspropsheet"},
    {SFGAO_DROPTARGET, "droptarget"},
    {SFGAO_ENCRYPTED, "encrypted"},
    {SFGAO_ISSLOW, "isslow"},
    {SFGAO_GHOSTED, "ghosted"},
    {SFGAO_LINK, "link"},
    {SFGAO_SHARE, "share"},
    {SFGAO_READONLY, "readonly"},
    {SFGAO_HIDDEN, "hidden"},
    {SFGAO_NONENUMERATED, "nonenumerated"},
    {SFGAO_STREAM, "stream"},
    {SFGAO_STORAGEANCESTOR, "storageancestor"},
    {SFGAO_REMOVABLE, "removable"},
    {SFGAO_COMPRESSED, "compressed"},
    {SFGAO_BROWSABLE, "browsable"},
    {SFGAO_FILESYSANCESTOR, "filesysancestor"},
    {SFGAO_FOLDER, "folder"},
    {SFGAO_FILESYSTEM, "filesystem"},
    {SFGAO_HASSUBFOLDER, "hassubfolder"},
};

constexpr std::pair<TItemIdListDisplayNameFormat, const char*> NameForms[] = {
    {dnfNormal, "dnfNormal"},
    {dnfInFolder, "dnfInFolder"},
    {dnfPath, "dnfPath"},
    {dnfPhysicalPath, "dnfPhysicalPath"},
    {dnfRelativeForAddressBar, "dnfRelativeForAddressBar"},
    {dnfRelativeParsing, "dnfRelativeParsing"},
    {dnfAbsoluteParsing, "dnfAbsoluteParsing"},
    {dnfForExplorer, "dnfForExplorer"},
    {dnfPreferPhysical, "dnfPreferPhysical"},
};

std::vector<std::string> AttributesOf(IItemIdList& item) {
  DWORD all = 0;
  for (const auto& [bit, name] : AttributeNames) all |= bit;
  // One question for all bits; the item's own way answers one bit at a time.
  if (const Ref<IShellItem> shellItem = item.ShellItem()) {
    SFGAOF bits = 0;
    if (FAILED(shellItem->GetAttributes(all, &bits))) bits = 0;
    all = bits;
  } else {
    all = 0;
  }
  std::vector<std::string> names;
  for (const auto& [bit, name] : AttributeNames)
    if (all & bit) names.push_back(name);
  return names;
}

std::string Quote(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      constexpr char digits[] = "0123456789abcdef";
      quoted += "\\u00";
      quoted += digits[c >> 4];
      quoted += digits[c & 15];
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string QuoteOrNull(const std::optional<std::string>& text) {
  return text ? Quote(*text) : "null";
}

std::string PadLeft(const std::string& text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace

TDescription Describe(TFolderTrek& cursor) {
  TDescription d;
  const Ref<IItemIdList> item = cursor.GetAbsoluteItemIdList();
  if (!item) return d;
  d.Name = ToUtf8(item->DisplayName(dnfInFolder));
  d.IsFolder = item->IsFolder();
  d.Path = ToUtf8(item->Path());
  d.Depth = item->Depth();
  d.Special = ToUtf8(TOakShellFolderHelper::ToIdentifier(item->SpecialFolder()));
  d.Attributes = AttributesOf(*item);
  if (!d.IsFolder && !d.Path.empty()) {
    const std::int64_t size = GetFileSize(item->Path());
    if (size >= 0) d.Size = size;
  }
  if (const double modified = cursor.GetLastChangeDate(); modified > 0)
    d.Modified = ToUtf8(FormatDateTime(u"yyyy-mm-dd hh:nn:ss", modified));
  if (item->HasAttributes(SFGAO_LINK)) {
    const Ref<IItemIdList> target = item->LinkTarget();
    if (target != item) d.Target = ToUtf8(target->DisplayPath());
  }
  for (const auto& [format, name] : NameForms)
    d.Names.emplace_back(name, ToUtf8(item->DisplayName(format)));
  return d;
}

std::string ToRow(const TDescription& d) {
  std::string row = d.IsFolder ? "d  " : d.Target ? "l  " : "-  ";
  row += PadLeft(d.Modified.value_or(""), 19);
  row += PadLeft(d.Size ? std::to_string(*d.Size) : "", 13);
  row += "  " + d.Name;
  if (d.Target) row += " -> " + *d.Target;
  return row;
}

std::string ToJson(const TDescription& d) {
  std::string json = "{\"name\":" + Quote(d.Name);
  json += std::string(",\"folder\":") + (d.IsFolder ? "true" : "false");
  json += ",\"path\":" + Quote(d.Path);
  json += ",\"depth\":" + std::to_string(d.Depth);
  json += ",\"special\":" + Quote(d.Special);
  json += ",\"attributes\":[";
  for (std::size_t i = 0; i < d.Attributes.size(); ++i)
    json += (i ? "," : "") + Quote(d.Attributes[i]);
  json += "],\"size\":" + (d.Size ? std::to_string(*d.Size) : "null");
  json += ",\"modified\":" + QuoteOrNull(d.Modified);
  json += ",\"target\":" + QuoteOrNull(d.Target);
  json += ",\"names\":{";
  for (std::size_t i = 0; i < d.Names.size(); ++i)
    json += (i ? "," : "") + Quote(d.Names[i].first) + ":" + Quote(d.Names[i].second);
  return json + "}}";
}

std::string ToBlock(const TDescription& d) {
  std::string block;
  const auto line = [&block](const std::string& key, const std::string& value) {
    block += key + std::string(key.size() < 26 ? 26 - key.size() : 1, ' ') + value + "\n";
  };
  line("name", d.Name);
  line("folder", d.IsFolder ? "yes" : "no");
  line("path", d.Path);
  line("depth", std::to_string(d.Depth));
  line("special", d.Special);
  std::string attributes;
  for (const std::string& name : d.Attributes) attributes += (attributes.empty() ? "" : " ") + name;
  line("attributes", attributes);
  if (d.Size) line("size", std::to_string(*d.Size));
  if (d.Modified) line("modified", *d.Modified);
  if (d.Target) line("target", *d.Target);
  for (const auto& [form, name] : d.Names) line(form, name);
  return block;
}
