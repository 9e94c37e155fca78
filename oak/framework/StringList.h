// TStringList: the list of texts in memory.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "oak/framework/Strings.h"

namespace oak {

/// What a sorted list does with a text that it has.
enum TDuplicates : std::uint8_t {
  dupIgnore,  ///< The list stays as it is; Add gives the index of the present one.
  dupAccept,  ///< It is added beside the present one.
  dupError    ///< EStringListError.
};

/// Texts and objects in memory. Compares ignoring case by default, as the file
/// system does. One thread at a time.
class TStringList : public TStrings {
 public:
  /// Order of the texts at two indexes of the list: negative, 0 or positive. Must
  /// not change the list.
  using TCompare = std::function<int(const TStringList& list, int index1, int index2)>;

  TStringList() = default;
  TStringList(std::initializer_list<TStringView> strings) { AddStrings(strings); }
  explicit TStringList(const TStringArray& strings) { AddStrings(strings); }
  /// Frees the objects if they are owned; tells nobody.
  ~TStringList() override;

  int GetCount() const override { return static_cast<int>(fItems.size()); }
  const TString& Get(int index) const override { return At(index).Text; }
  void Put(int index, TStringView text) override;
  TObject* GetObjects(int index) const override { return At(index).Object; }
  void SetObjects(int index, TObject* object) override;
  int Add(TStringView text) override { return AddObject(text, nullptr); }
  /// In a sorted list at its place in the order. That moves those behind it: many
  /// texts are added by AddStrings.
  int AddObject(TStringView text, TObject* object) override;
  void Insert(int index, TStringView text) override { InsertObject(index, text, nullptr); }
  void InsertObject(int index, TStringView text, TObject* object) override;
  void Delete(int index) override;
  /// In one step.
  void Clear() override;
  void Exchange(int index1, int index2) override;
  void Move(int from, int to) override;
  using TStrings::AddStrings;
  /// Many at once; into a sorted list by one sort, not one by one.
  void AddStrings(const TStrings& strings) override;
  void AddStrings(const TStringArray& strings) override;
  /// Room for that many texts.
  void SetCapacity(int count) { fItems.reserve(static_cast<std::size_t>(count < 0 ? 0 : count)); }

  /// Logarithmic in a sorted list.
  int IndexOf(TStringView text) const override;
  /// Sorted lists only, else EStringListError. True if the text is there; `index`
  /// is its first place, or the one where it belongs.
  bool Find(TStringView text, int& index) const;

  /// Orders the list by its own comparison; equal texts keep their order.
  void Sort();
  /// Orders by `compare`, equal ones keep their order. A sorted list raises.
  void CustomSort(const TCompare& compare);
  /// Default false. A sorted list is always in order; Insert, Put, Exchange and
  /// Move raise EStringListError.
  bool GetSorted() const noexcept { return fSorted; }
  void SetSorted(bool value);
  /// Counts while the list is sorted. Default dupIgnore.
  TDuplicates GetDuplicates() const noexcept { return fDuplicates; }
  void SetDuplicates(TDuplicates value) noexcept { fDuplicates = value; }
  /// Default false. A sorted list is sorted again.
  bool GetCaseSensitive() const noexcept { return fCaseSensitive; }
  void SetCaseSensitive(bool value);
  /// Whether objects end with their texts. Default false.
  bool GetOwnsObjects() const noexcept { return fOwnsObjects; }
  void SetOwnsObjects(bool value) noexcept { fOwnsObjects = value; }

  /// The list is about to change; at the start of an update bracket.
  TNotifyEvent OnChanging;
  /// The list has changed; at the end of an update bracket.
  TNotifyEvent OnChange;

 protected:
  virtual void Changing();
  virtual void Changed();
  void SetUpdateState(bool isUpdating) override;
  int CompareStrings(TStringView a, TStringView b) const override;
  void SetStrings(TStringArray strings) override;
  /// Add and Insert end here; those that add many at once don't.
  virtual void InsertItem(int index, TStringView text, TObject* object);

 private:
  struct TItem {
    TString Text;
    TObject* Object = nullptr;
  };
  using TItems = std::vector<TItem>;

  const TItem& At(int index) const {
    if (index < 0 || index >= GetCount()) RaiseIndex(index, GetCount());
    return fItems[static_cast<std::size_t>(index)];
  }
  TItem& At(int index) { return const_cast<TItem&>(std::as_const(*this).At(index)); }
  void CheckUnsorted() const;
  [[noreturn]] static void RaiseDuplicate(TStringView text);
  bool Locate(TStringView text, int& index) const;
  auto Less() const {
    return [this](const TItem& a, const TItem& b) { return CompareStrings(a.Text, b.Text) < 0; };
  }
  void AddItems(TItems items);
  void PrepareMerge(TItems& items) const;
  void MergeSorted(TItems items);
  void SortItems();
  void FreeObjects(TItems& items);

  TItems fItems;
  bool fSorted = false;
  bool fCaseSensitive = false;
  bool fOwnsObjects = false;
  TDuplicates fDuplicates = dupIgnore;
};

}  // namespace oak
