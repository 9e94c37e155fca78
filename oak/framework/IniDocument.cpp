#include "oak/framework/IniDocument.h"

#include <algorithm>
#include <utility>

#include "oak/framework/Strings.h"

namespace oak {
namespace {

constexpr TStringView kLineEnds[] = {u"\r\n", u"\n", u"\r"};

bool IsIniBlank(char16_t c) { return c <= u' '; }

TStringView TrimmedView(TStringView text) {
  while (!text.empty() && IsIniBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsIniBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool HasQuotes(TStringView text) {
  return text.size() >= 2 && text.front() == text.back() &&
         (text.front() == u'"' || text.front() == u'\'');
}

/// The form in which a value comes back from its line.
TString ToIniValue(TStringView value) {
  const bool needsQuotes = HasQuotes(value) || TrimmedView(value).size() != value.size();
  return needsQuotes ? u"\"" + TString(value) + u"\"" : TString(value);
}

/// The unit at a place in bytes of one or two a unit.
char16_t UnitAt(std::string_view bytes, std::size_t at, TEncoding encoding) {
  const auto first = static_cast<unsigned char>(bytes[at]);
  if (encoding.GetUnitSize() == 1) return first;
  const auto second = static_cast<unsigned char>(bytes[at + 1]);
  return static_cast<char16_t>(encoding == TEncoding::Unicode() ? second << 8 | first
                                                                : first << 8 | second);
}

/// Length in bytes of the line at the start of the bytes, and what ends it.
std::size_t MeasureLine(std::string_view bytes, TEncoding encoding, TStringView& end) {
  const std::size_t unit = encoding.GetUnitSize();
  std::size_t at = 0;
  for (; at + unit <= bytes.size(); at += unit) {
    const char16_t c = UnitAt(bytes, at, encoding);
    if (c != u'\r' && c != u'\n') continue;
    const bool isPair =
        c == u'\r' && at + 2 * unit <= bytes.size() && UnitAt(bytes, at + unit, encoding) == u'\n';
    end = kLineEnds[isPair ? 0 : c == u'\n' ? 1 : 2];
    return at;
  }
  end = {};
  return bytes.size();
}

bool IsPlain(TStringView text) {
  return std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 0x80; });
}

}  // namespace

// --- what a line says ----------------------------------------------------------

TIniDocument::TKind TIniDocument::KindOf(TStringView line) {
  line = TrimmedView(line);
  if (line.empty() || line.front() == u';') return ikOther;
  if (line.front() == u'[' && line.find(u']') != TStringView::npos) return ikSection;
  const std::size_t end = line.find(u'=');
  return end == TStringView::npos || end == 0 ? ikOther : ikKey;
}

bool TIniDocument::IsCommentOrBlank(TStringView line) {
  line = TrimmedView(line);
  return line.empty() || line.front() == u';';
}

// What follows the bracket is of no interest, as for the system's functions.
TStringView TIniDocument::SectionName(TStringView line) {
  const std::size_t start = line.find(u'[') + 1;
  return TrimmedView(line.substr(start, line.rfind(u']') - start));
}

TStringView TIniDocument::KeyName(TStringView line) {
  return TrimmedView(line.substr(0, line.find(u'=')));
}

// A key may have "=" in itself: it is then a longer start of the line than the
// line's own key.
std::size_t TIniDocument::SeparatorOf(TStringView line, TStringView key) {
  std::size_t at = 0;
  while (at < line.size() && IsIniBlank(line[at])) ++at;
  if (!StartsText(key, line.substr(at))) return TStringView::npos;
  at += key.size();
  while (at < line.size() && IsIniBlank(line[at])) ++at;
  return at < line.size() && line[at] == u'=' ? at : TStringView::npos;
}

TStringView TIniDocument::ValueBehind(TStringView line, std::size_t separator) {
  const TStringView value = TrimmedView(line.substr(separator + 1));
  return HasQuotes(value) ? value.substr(1, value.size() - 2) : value;
}

// --- reading and writing the whole ------------------------------------------------

void TIniDocument::Load(std::string_view bytes) {
  fSections.clear();
  fLines.clear();
  const std::size_t mark = TEncoding::GetBufferEncoding(bytes, fEncoding, fUnmarked);
  fHasMark = mark > 0;
  if (bytes.empty()) {
    fEncoding = fCreated;
    fHasMark = true;
  }
  fLineEnd = kLineEnds[0];
  bool isFirst = true;
  TSection* section = nullptr;
  bytes.remove_prefix(mark);
  fTail = bytes.substr(bytes.size() - bytes.size() % fEncoding.GetUnitSize());
  bytes.remove_suffix(fTail.size());
  for (; !bytes.empty(); isFirst = false) {
    TStringView end;
    const std::size_t size = MeasureLine(bytes, fEncoding, end);
    if (isFirst && !end.empty()) fLineEnd = end;
    AppendLine(bytes.substr(0, size), end);
    bytes.remove_prefix(size + end.size() * fEncoding.GetUnitSize());
    IndexLine(std::prev(fLines.end()), section);
  }
}

void TIniDocument::AppendLine(std::string_view bytes, TStringView end) {
  TLine line;
  line.Text = fEncoding.GetString(bytes);
  line.End = end;
  line.Kind = KindOf(line.Text);
  if (!IsPlain(line.Text) && fEncoding.GetBytes(line.Text) != bytes)
    line.Raw = std::make_unique<std::string>(bytes);
  fLines.push_back(std::move(line));
}

void TIniDocument::IndexLine(TPlace line, TSection*& section) {
  if (line->Kind == ikSection) {
    section = &fSections[UpperCase(SectionName(line->Text))];
    section->Headers.push_back(line);
    if (section->Headers.size() == 1) section->Last = line;
  } else if (line->Kind == ikKey) {
    // A key above all sections belongs to none and can't be asked for.
    if (!section) return void(line->Kind = ikOther);
    IndexKey(*section, line);
    if (section->Headers.size() == 1) section->Last = line;
  }
}

void TIniDocument::IndexKey(TSection& section, TPlace line) {
  const auto [entry, isNew] =
      section.Keys.try_emplace(UpperCase(KeyName(line->Text)), TKey{line, false});
  if (!isNew) entry->second.Repeated = true;
}

std::string TIniDocument::Save() const {
  std::string bytes;
  if (fHasMark) bytes += fEncoding.GetPreamble();
  for (const TLine& line : fLines) {
    bytes += line.Raw ? *line.Raw : fEncoding.GetBytes(line.Text);
    bytes += fEncoding.GetBytes(line.End);
  }
  return bytes += fTail;
}

TString TIniDocument::Text() const {
  TString text;
  for (const TLine& line : fLines) text.append(line.Text).append(line.End);
  return text;
}

// --- searching ---------------------------------------------------------------------

const TIniDocument::TSection* TIniDocument::FindSection(TStringView name) const {
  const auto found = fSections.find(UpperCase(name));
  return found == fSections.end() ? nullptr : &found->second;
}

template <class TBody>
void TIniDocument::ForEachKey(const TSection& section, TBody&& body) const {
  for (const TPlace& header : section.Headers)
    for (TPlace line = std::next(header); line != fLines.end() && line->Kind != ikSection;) {
      const TPlace place = line++;  // the body may remove it
      if (place->Kind == ikKey) body(place);
    }
}

std::optional<TIniDocument::TPlace> TIniDocument::FindKey(const TSection& section,
                                                          TStringView key) const {
  if (key.find(u'=') == TStringView::npos) {
    const auto found = section.Keys.find(UpperCase(key));
    if (found == section.Keys.end()) return std::nullopt;
    return found->second.First;
  }
  std::optional<TPlace> result;
  ForEachKey(section, [&](TPlace line) {
    if (!result && SeparatorOf(line->Text, key) != TStringView::npos) result = line;
  });
  return result;
}

bool TIniDocument::Read(TStringView section, TStringView key, TString& value) const {
  const TSection* const found = FindSection(section);
  const auto line = found ? FindKey(*found, key) : std::nullopt;
  if (!line) return false;
  const TStringView text = (*line)->Text;
  value = ValueBehind(text, SeparatorOf(text, key));
  return true;
}

void TIniDocument::ListSections(TStrings& names) const {
  TStringArray list;
  for (const TLine& line : fLines) {
    if (line.Kind != ikSection) continue;
    const TStringView name = SectionName(line.Text);
    if (&*FindSection(name)->Headers.front() == &line) list.emplace_back(name);
  }
  names.AddStrings(list);
}

void TIniDocument::ListSection(TStringView section, bool withValues, TStrings& lines) const {
  const TSection* const found = FindSection(section);
  if (!found) return;
  TStringArray list;
  ForEachKey(*found, [&](TPlace line) {
    const TStringView text = line->Text;
    const TStringView key = KeyName(text);
    if (withValues)
      list.push_back(TString(key) + u"=" + TString(ValueBehind(text, text.find(u'='))));
    else if (found->Keys.find(UpperCase(key))->second.First == line)
      list.emplace_back(key);
  });
  lines.AddStrings(list);
}

// --- changing -----------------------------------------------------------------------

bool TIniDocument::Write(TStringView section, TStringView key, TStringView value) {
  TSection* found = FindSection(section);
  const auto place = found ? FindKey(*found, key) : std::nullopt;
  if (!place) {
    Append(section, TString(key) + u"=" + ToIniValue(value));
    return true;
  }
  TLine& line = **place;
  const std::size_t separator = SeparatorOf(line.Text, key);
  if (ValueBehind(line.Text, separator) == value) return false;
  std::size_t start = separator + 1;
  while (start < line.Text.size() && IsIniBlank(line.Text[start])) ++start;
  line.Text.replace(start, TString::npos, ToIniValue(value));
  line.Raw.reset();
  MakeRoomFor(line.Text);
  return true;
}

void TIniDocument::Append(TStringView section, TString line) {
  MakeRoomFor(line);
  TSection* found = FindSection(section);
  AddKey(found ? *found : AddSection(section), std::move(line));
}

void TIniDocument::AddKey(TSection& section, TString line) {
  section.Last = InsertLine(std::next(section.Last), std::move(line), ikKey);
  const TStringView key = KeyName(section.Last->Text);
  const auto [entry, isNew] = section.Keys.try_emplace(UpperCase(key), TKey{section.Last, false});
  if (!isNew) ReindexKey(section, key);
}

TIniDocument::TSection& TIniDocument::AddSection(TStringView name) {
  TString text = u"[" + TString(name) + u"]";
  MakeRoomFor(text);
  if (!fLines.empty() && !TrimmedView(fLines.back().Text).empty())
    InsertLine(fLines.end(), {}, ikOther);
  TSection& section = fSections[UpperCase(name)];
  section.Last = InsertLine(fLines.end(), std::move(text), ikSection);
  section.Headers.assign(1, section.Last);
  return section;
}

TIniDocument::TPlace TIniDocument::InsertLine(TPlace before, TString text, TKind kind) {
  if (before != fLines.begin() && std::prev(before)->End.empty()) std::prev(before)->End = fLineEnd;
  return fLines.insert(before, TLine{std::move(text), nullptr, fLineEnd, kind});
}

// Bytes that were no text in the old encoding can't be kept in a new one.
void TIniDocument::MakeRoomFor(TStringView text) {
  if (fEncoding.CanHold(text)) return;
  fEncoding = TEncoding::Unicode();
  fHasMark = true;
  for (TLine& line : fLines) line.Raw.reset();
}

// The first of the lines with that key, and whether there are more.
void TIniDocument::ReindexKey(TSection& section, TStringView key) {
  const TString name = UpperCase(key);
  section.Keys.erase(name);
  ForEachKey(section, [&](TPlace line) {
    if (SameText(KeyName(line->Text), name)) IndexKey(section, line);
  });
}

bool TIniDocument::DeleteKey(TStringView section, TStringView key) {
  TSection* const found = FindSection(section);
  const auto first = found ? FindKey(*found, key) : std::nullopt;
  if (!first) return false;
  const TString name(KeyName((*first)->Text));
  const bool isRepeated = found->Keys.find(UpperCase(name))->second.Repeated;
  const auto erase = [&](TPlace line) {
    if (SeparatorOf(line->Text, key) == TStringView::npos) return;
    if (found->Last == line) found->Last = std::prev(line);
    fLines.erase(line);
  };
  if (isRepeated)
    ForEachKey(*found, erase);
  else
    erase(*first);
  if (isRepeated && name.size() != key.size())
    ReindexKey(*found, name);
  else
    found->Keys.erase(UpperCase(name));
  return true;
}

bool TIniDocument::EraseSection(TStringView section) {
  const auto found = fSections.find(UpperCase(section));
  if (found == fSections.end()) return false;
  for (const TPlace& header : found->second.Headers) EraseBlock(header);
  fSections.erase(found);
  return true;
}

// Comments behind the last key stand above the next section and are about that.
void TIniDocument::EraseBlock(TPlace header) {
  TPlace end = std::next(header);
  TPlace rest = end;
  for (; end != fLines.end() && end->Kind != ikSection; ++end)
    if (!IsCommentOrBlank(end->Text)) rest = std::next(end);
  fLines.erase(header, rest);
  while (rest != end && TrimmedView(rest->Text).empty()) rest = fLines.erase(rest);
}

}  // namespace oak
