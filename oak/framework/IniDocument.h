// The lines of an ini file, and where its sections and keys are among them.
#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "oak/framework/Encoding.h"

namespace oak {

class TStrings;

/// An ini file as TIniFile keeps it: each line as it stood, so that what is not
/// changed is written as it was read. Names are trimmed, and checked by the caller.
class TIniDocument {
 public:
  /// `encoding` is that of bytes without mark, `created` that of a new file.
  TIniDocument(TEncoding encoding, TEncoding created)
      : fUnmarked(encoding), fCreated(created), fEncoding(created) {}
  TIniDocument(const TIniDocument&) = delete;
  TIniDocument& operator=(const TIniDocument&) = delete;

  void Load(std::string_view bytes);
  std::string Save() const;
  TString Text() const;
  TEncoding Encoding() const noexcept { return fEncoding; }

  bool HasSection(TStringView section) const { return FindSection(section) != nullptr; }
  /// The value without quotation marks; false if there is no such key.
  bool Read(TStringView section, TStringView key, TString& value) const;
  /// False if the value was there already.
  bool Write(TStringView section, TStringView key, TStringView value);
  /// Adds "key=value" behind the keys of the section, whatever keys there are.
  void Append(TStringView section, TString line);
  bool EraseSection(TStringView section);
  bool DeleteKey(TStringView section, TStringView key);
  void ListSections(TStrings& names) const;
  /// The keys, or "key=value" for each.
  void ListSection(TStringView section, bool withValues, TStrings& lines) const;

 private:
  enum TKind : std::uint8_t { ikOther, ikSection, ikKey };
  struct TLine {
    TString Text;                      // without what ends it
    std::unique_ptr<std::string> Raw;  // its bytes, if the text does not give them back
    TStringView End;                   // CR LF, LF, CR, or nothing at the file's end
    TKind Kind = ikOther;
  };
  using TLines = std::list<TLine>;
  using TPlace = TLines::iterator;
  struct TKey {
    TPlace First;
    bool Repeated = false;
  };
  struct TSection {
    std::vector<TPlace> Headers;
    TPlace Last;  // new keys go behind it: the last key below the first header, or that
    std::unordered_map<TString, TKey> Keys;  // by upper-case name
  };

  static TKind KindOf(TStringView line);
  static TStringView SectionName(TStringView line);
  static TStringView KeyName(TStringView line);
  /// Where the "=" behind `key` stands in a line, npos if the line has another key.
  static std::size_t SeparatorOf(TStringView line, TStringView key);
  static TStringView ValueBehind(TStringView line, std::size_t separator);
  static bool IsCommentOrBlank(TStringView line);

  void AppendLine(std::string_view bytes, TStringView end);
  void IndexLine(TPlace line, TSection*& section);
  void IndexKey(TSection& section, TPlace line);
  void ReindexKey(TSection& section, TStringView key);
  TPlace InsertLine(TPlace before, TString text, TKind kind);
  TSection& AddSection(TStringView name);
  void AddKey(TSection& section, TString line);
  void MakeRoomFor(TStringView text);
  void EraseBlock(TPlace header);
  const TSection* FindSection(TStringView name) const;
  TSection* FindSection(TStringView name) {
    return const_cast<TSection*>(std::as_const(*this).FindSection(name));
  }
  std::optional<TPlace> FindKey(const TSection& section, TStringView key) const;
  template <class TBody>
  void ForEachKey(const TSection& section, TBody&& body) const;

  TEncoding fUnmarked;
  TEncoding fCreated;
  TEncoding fEncoding;
  bool fHasMark = true;
  std::string fTail;  // half a unit at the end of the file
  TStringView fLineEnd = u"\r\n";
  TLines fLines;
  std::unordered_map<TString, TSection> fSections;  // by upper-case name
};

}  // namespace oak
