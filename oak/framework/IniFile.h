// TIniFile: settings in a text file of sections and keys.
#pragma once

#include <memory>

#include "oak/framework/Component.h"
#include "oak/framework/Encoding.h"
#include "oak/framework/FileContent.h"

namespace oak {

class TIniDocument;
class TStrings;

/// An ini file in memory: read as a whole, changed, and written by UpdateFile.
///
/// Text is 16-bit. A byte order mark tells the encoding; without one it is the
/// system's code page. The file is written as it was read: comments, blank lines,
/// order, ends of lines, and whatever is no key at all stay, down to bytes that are
/// no text. New files are UTF-16 with a mark, the form that the system's own
/// functions for such files take; a file whose encoding can't hold a new text
/// becomes one, too.
///
/// Names of sections and keys are compared ignoring case. Sections of one name
/// count as one, and of keys of one name the first counts. The key ends at the
/// first "=" of its line, blanks around both sides are dropped, and one pair of
/// quotation marks around a value is, as the system's functions do it; values that
/// need such a pair to come back get one. Lines that begin with ";" are comments,
/// a line "[...]" begins a section.
///
/// Reading raises nothing. Writing raises EArgumentException for a name or value
/// that no ini file can hold: an empty section or key, a line break, a key that
/// would read as comment, as section or as none.
///
/// One thread at a time; any thread.
class TIniFile : public TObject {
 public:
  /// Reads the file; one that does not exist is empty. Raises EFileError.
  explicit TIniFile(TString fileName);
  /// As above, with the encoding of files without a mark and of new files.
  TIniFile(TString fileName, TEncoding encoding);
  /// Changes that were not written by UpdateFile are lost.
  ~TIniFile() override;
  TIniFile(const TIniFile&) = delete;
  TIniFile& operator=(const TIniFile&) = delete;

  const TString& GetFileName() const noexcept { return fFileName; }
  /// Whether there is something that UpdateFile would write.
  bool GetModified() const noexcept { return fModified; }
  TEncoding GetEncoding() const noexcept;

  /// An empty value gives "", a missing key `fallback`.
  TString ReadString(TStringView section, TStringView key, TStringView fallback = {}) const;
  /// Decimal, or hexadecimal after "0x" or "$"; `fallback` if it is neither or
  /// beyond 32 bits.
  int ReadInteger(TStringView section, TStringView key, int fallback = 0) const;
  /// A number other than 0 is true; `fallback` if it is none.
  bool ReadBool(TStringView section, TStringView key, bool fallback = false) const;
  void WriteString(TStringView section, TStringView key, TStringView value);
  /// Adds a key without a value behind those of the section, even if there is such a key: for
  /// sections that are lists of texts, which may hold "=".
  void AppendKey(TStringView section, TStringView key);
  void WriteInteger(TStringView section, TStringView key, int value);
  /// "1" or "0".
  void WriteBool(TStringView section, TStringView key, bool value);

  bool SectionExists(TStringView section) const;
  bool ValueExists(TStringView section, TStringView key) const;
  /// Appends the names of the sections, in the order of the file.
  void ReadSections(TStrings& sections) const;
  /// Appends the keys of a section, in the order of the file.
  void ReadSection(TStringView section, TStrings& keys) const;
  /// Appends "key=value" for each key of a section.
  void ReadSectionValues(TStringView section, TStrings& values) const;
  /// Removes a section with everything in it but comments at its end, which belong
  /// to what follows.
  void EraseSection(TStringView section);
  void DeleteKey(TStringView section, TStringView key);
  /// Empties the file.
  void Clear();

  /// Writes the changes, if there are any. The file is replaced as a whole: on
  /// failure EFileError is raised and the file is as it was. What others wrote to
  /// it since it was read is lost.
  void UpdateFile();
  /// Reads the file again and forgets changes. Raises EFileError.
  void Reload();

  /// The whole content as text and as the bytes of the file.
  TString GetText() const;
  std::string GetBytes() const;
  /// Takes the bytes of a file.
  void SetBytes(std::string_view bytes);

 private:
  TIniFile(TString fileName, TEncoding unmarked, TEncoding created);

  TString fFileName;
  std::unique_ptr<TIniDocument> fDocument;
  bool fModified = false;
};

/// The ini file that is kept in memory; TIniFile always is.
using TMemIniFile = TIniFile;

}  // namespace oak
