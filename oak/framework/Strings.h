// TStrings: a list of texts, each with an object beside it. See StringList.h for
// the list that most programs use.
#pragma once

#include <initializer_list>
#include <iterator>
#include <optional>

#include "oak/base/Exceptions.h"
#include "oak/framework/Component.h"
#include "oak/framework/Encoding.h"

namespace oak {

/// An index outside a list, or an operation that its order forbids.
class EStringListError : public Exception {
  using Exception::Exception;
};

/// A list of texts. Derived classes say where the texts live: they implement
/// GetCount, Get, Put, Insert, Delete and Clear, and override others where they
/// know a faster way. One thread at a time.
class TStrings : public TPersistent {
 public:
  /// Walks over the texts; ended by any change of the list.
  class TIterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = TString;
    using difference_type = std::ptrdiff_t;
    using pointer = const TString*;
    using reference = const TString&;
    TIterator(const TStrings* strings, int index) : fStrings(strings), fIndex(index) {}
    const TString& operator*() const { return fStrings->Get(fIndex); }
    TIterator& operator++() {
      ++fIndex;
      return *this;
    }
    TIterator operator++(int) {
      const TIterator before = *this;
      ++fIndex;
      return before;
    }
    bool operator==(const TIterator&) const = default;

   private:
    const TStrings* fStrings;
    int fIndex;
  };

  TStrings() = default;
  TStrings(const TStrings&) = delete;
  TStrings& operator=(const TStrings&) = delete;

  // --- one text. An index outside 0..GetCount()-1 raises EStringListError. ---
  virtual int GetCount() const = 0;
  /// The reference lasts until the list changes.
  virtual const TString& Get(int index) const = 0;
  virtual void Put(int index, TStringView text) = 0;
  const TString& operator[](int index) const { return Get(index); }
  /// The object beside a text; never owned here.
  virtual TObject* GetObjects(int index) const;
  virtual void SetObjects(int index, TObject* object);
  /// Appends; the result is the new index.
  virtual int Add(TStringView text);
  virtual int AddObject(TStringView text, TObject* object);
  /// `index` may be GetCount().
  virtual void Insert(int index, TStringView text) = 0;
  virtual void InsertObject(int index, TStringView text, TObject* object);
  virtual void Delete(int index) = 0;
  virtual void Clear() = 0;
  virtual void Exchange(int index1, int index2);
  virtual void Move(int from, int to);

  // --- many -----------------------------------------------------------------
  /// Appends texts and objects of another list, which may be this one.
  virtual void AddStrings(const TStrings& strings);
  virtual void AddStrings(const TStringArray& strings);
  void AddStrings(std::initializer_list<TStringView> strings);
  /// Copies texts, objects and the settings of the text forms.
  void Assign(const TPersistent* source) override;
  /// The same texts in the same order and case; objects don't count.
  bool Equals(const TStrings& other) const;
  TStringArray ToArray() const;
  TIterator begin() const { return {this, 0}; }
  TIterator end() const { return {this, GetCount()}; }

  // --- searching: -1 if there is none. Ignores case unless a list says other. -
  virtual int IndexOf(TStringView text) const;
  virtual int IndexOfName(TStringView name) const;
  virtual int IndexOfObject(const TObject* object) const;
  bool Contains(TStringView text) const { return IndexOf(text) >= 0; }

  // --- name and value, divided by NameValueSeparator (default "=") ------------
  /// What stands before the separator; empty without one.
  TString GetNames(int index) const;
  /// The value of the first text with that name, or empty.
  TString GetValues(TStringView name) const;
  /// Replaces or appends; an empty value deletes the text.
  void SetValues(TStringView name, TStringView value);
  /// What follows the separator; empty without one.
  TString GetValueFromIndex(int index) const;
  /// Keeps the name. An empty value leaves "name=".
  void SetValueFromIndex(int index, TStringView value);
  char16_t GetNameValueSeparator() const noexcept { return fNameValueSeparator; }
  void SetNameValueSeparator(char16_t value) noexcept { fNameValueSeparator = value; }

  // --- as one text ------------------------------------------------------------
  /// The texts, each followed by LineBreak.
  TString GetText() const;
  /// Takes the lines of a text: each of CR LF, LF and CR ends one, unless LineBreak
  /// is something else than these.
  void SetText(TStringView text);
  const TString& GetLineBreak() const noexcept { return fLineBreak; }
  /// Default CR LF. Empty sets the default.
  void SetLineBreak(TString value);
  /// Whether GetText puts a LineBreak after the last text too. Default true.
  bool GetTrailingLineBreak() const noexcept { return fTrailingLineBreak; }
  void SetTrailingLineBreak(bool value) noexcept { fTrailingLineBreak = value; }

  /// The texts divided by Delimiter (default ","). One that holds the delimiter,
  /// QuoteChar (default ", none if 0) or, without StrictDelimiter, a blank or
  /// control character is quoted. What GetDelimitedText writes, SetDelimitedText
  /// reads back, as long as QuoteChar is not 0.
  TString GetDelimitedText() const;
  /// Without StrictDelimiter (the default) blanks and control characters divide too.
  void SetDelimitedText(TStringView text);
  /// DelimitedText with "," and quotation marks, never strict.
  TString GetCommaText() const;
  void SetCommaText(TStringView text);
  char16_t GetDelimiter() const noexcept { return fDelimiter; }
  void SetDelimiter(char16_t value) noexcept { fDelimiter = value; }
  char16_t GetQuoteChar() const noexcept { return fQuoteChar; }
  void SetQuoteChar(char16_t value) noexcept { fQuoteChar = value; }
  bool GetStrictDelimiter() const noexcept { return fStrictDelimiter; }
  void SetStrictDelimiter(bool value) noexcept { fStrictDelimiter = value; }

  // --- files and streams: raise EFileError --------------------------------------
  /// Replaces the list by the lines of a file. The encoding is that of the mark,
  /// else `encoding`, else UTF-8 if the bytes are that, else the system's code page.
  void LoadFromFile(const TString& path, std::optional<TEncoding> encoding = {});
  /// From where the stream stands to its end.
  void LoadFromStream(IStream& stream, std::optional<TEncoding> encoding = {});
  /// Writes GetText, in the encoding last loaded unless one is given (new lists:
  /// UTF-8). A file is replaced as a whole or left as it was.
  void SaveToFile(const TString& path, std::optional<TEncoding> encoding = {}) const;
  void SaveToStream(IStream& stream, std::optional<TEncoding> encoding = {}) const;
  TEncoding GetEncoding() const noexcept { return fEncoding; }
  /// Whether saving writes the byte order mark. Default true; loading sets it to
  /// what was there.
  bool GetWriteBOM() const noexcept { return fWriteBOM; }
  void SetWriteBOM(bool value) noexcept { fWriteBOM = value; }

  // --- updates -----------------------------------------------------------------
  /// Brackets a number of changes: they are told once, in the end. Nests.
  void BeginUpdate();
  void EndUpdate();
  bool IsUpdating() const noexcept { return fUpdateCount > 0; }
  /// Runs `body` inside an update bracket, which an exception closes too.
  template <class TBody>
  void WithinUpdate(TBody&& body) {
    BeginUpdate();
    try {
      body();
    } catch (...) {
      AbandonUpdate();
      throw;
    }
    EndUpdate();
  }

 protected:
  /// The first BeginUpdate and the last EndUpdate.
  virtual void SetUpdateState(bool isUpdating);
  /// Order of two texts in this list: negative, 0 or positive.
  virtual int CompareStrings(TStringView a, TStringView b) const;
  /// Replaces the content at once; objects are nil.
  virtual void SetStrings(TStringArray strings);
  [[noreturn]] static void RaiseIndex(int index, int count);

 private:
  void AbandonUpdate() noexcept;
  TString JoinDelimited(char16_t delimiter, char16_t quote, bool isStrict) const;
  void LoadBytes(std::string_view bytes, std::optional<TEncoding> encoding);
  std::string SaveBytes(std::optional<TEncoding> encoding) const;

  int fUpdateCount = 0;
  TString fLineBreak = u"\r\n";
  char16_t fDelimiter = u',';
  char16_t fQuoteChar = u'"';
  char16_t fNameValueSeparator = u'=';
  bool fStrictDelimiter = false;
  bool fTrailingLineBreak = true;
  bool fWriteBOM = true;
  TEncoding fEncoding;
};

}  // namespace oak
