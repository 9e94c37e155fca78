#include "oak/framework/Collection.h"

#include <gtest/gtest.h>

namespace oak::tests {
namespace {

class TNamedItem : public TCollectionItem {
 public:
  ~TNamedItem() override { --Living; }
  TNamedItem() { ++Living; }
  const TString& GetName() const { return fName; }
  void SetName(TStringView value) {
    fName = value;
    Changed(false);
  }
  void Assign(const TPersistent* source) override {
    const auto* item = dynamic_cast<const TNamedItem*>(source);
    if (!item) return TCollectionItem::Assign(source);
    SetName(item->fName);
  }
  inline static int Living = 0;

 private:
  TString fName;
};

/// Writes down what it is told of.
class TNamedItems : public TOwnedCollection {
 public:
  explicit TNamedItems(TPersistent* owner = nullptr)
      : TOwnedCollection(owner, FactoryOf<TNamedItem>()) {}
  ~TNamedItems() override { Clear(); }
  TNamedItem* At(int index) const { return static_cast<TNamedItem*>(GetItem(index)); }
  void Add(TStringView names) {
    for (const char16_t c : names)
      static_cast<TNamedItem*>(TCollection::Add())->SetName(TString(1, c));
  }
  TString Names() const {
    TString names;
    for (int i = 0; i < GetCount(); ++i) {
      names += At(i)->GetName();
      EXPECT_EQ(At(i)->GetIndex(), i);
      EXPECT_EQ(At(i)->GetCollection(), this);
    }
    return names;
  }
  TString TakeLog() { return std::exchange(fLog, TString()); }

 protected:
  void Update(TCollectionItem* item) override {
    fLog += item ? u"u" + static_cast<TNamedItem*>(item)->GetName() : u"U";
  }
  void Notify(TCollectionItem* item, TCollectionNotification action) override {
    EXPECT_EQ(GetItem(item->GetIndex()), item);
    fLog += action == cnAdded ? u"+" : action == cnExtracting ? u"~" : u"-";
    fLog += static_cast<TNamedItem*>(item)->GetName();
  }

 private:
  TString fLog;
};

TEST(Collection, KeepsIndexesWhateverMoves) {
  TComponent owner;
  TNamedItems items(&owner);
  EXPECT_EQ(items.GetOwner(), &owner);
  items.Add(u"abcde");
  const struct {
    int From, To;
    TString Expected;
  } moves[] = {
      {0, 4, u"bcdea"}, {4, 0, u"abcde"}, {1, 3, u"acdbe"}, {3, 1, u"abcde"}, {2, 2, u"abcde"}};
  for (const auto& move : moves) {
    items.At(move.From)->SetIndex(move.To);
    EXPECT_EQ(items.Names(), move.Expected);
  }
  items.Delete(1);
  static_cast<TNamedItem*>(items.Insert(0))->SetName(u"x");
  EXPECT_EQ(items.Names(), u"xacde");
  for (const int bad : {-1, 5}) {
    EXPECT_THROW(items.GetItem(bad), EListError);
    EXPECT_THROW(items.Delete(bad), EListError);
    EXPECT_THROW(items.Extract(bad), EListError);
    EXPECT_THROW(items.At(0)->SetIndex(bad), EListError);
  }
  EXPECT_THROW(items.Insert(6), EListError);
  EXPECT_EQ(items.Names(), u"xacde");
}

TEST(Collection, IdentifiersAreNotGivenTwice) {
  TNamedItems items;
  items.Add(u"abc");
  const int id = items.At(2)->GetID();
  EXPECT_EQ(items.FindItemID(id), items.At(2));
  items.Delete(2);
  EXPECT_EQ(items.FindItemID(id), nullptr);
  items.Add(u"d");
  EXPECT_NE(items.At(2)->GetID(), id);
  items.Clear();
  items.Add(u"e");
  EXPECT_EQ(items.FindItemID(items.At(0)->GetID()), items.At(0));
  EXPECT_GT(items.At(0)->GetID(), id);
}

TEST(Collection, TellsOfItemsAndBracketsUpdates) {
  TNamedItems items;
  items.Add(u"a");
  EXPECT_EQ(items.TakeLog(), u"+Uua");
  items.BeginUpdate();
  items.Add(u"bc");
  items.BeginUpdate();
  items.At(2)->SetIndex(0);
  items.EndUpdate();
  EXPECT_EQ(items.TakeLog(), u"++");
  items.EndUpdate();
  EXPECT_EQ(items.TakeLog(), u"U");
  items.Clear();
  EXPECT_EQ(items.TakeLog(), u"-b-a-cU");
  items.Clear();
  EXPECT_EQ(items.TakeLog(), u"");
}

TEST(Collection, ItemsChangeHands) {
  TNamedItem::Living = 0;
  {
    TNamedItems items;
    TNamedItems others;
    items.Add(u"abcd");
    others.Add(u"x");
    items.TakeLog();
    others.TakeLog();
    items.At(1)->SetCollection(&others);
    EXPECT_EQ(items.Names(), u"acd");
    EXPECT_EQ(others.Names(), u"xb");
    EXPECT_EQ(items.TakeLog(), u"~bU");
    EXPECT_EQ(others.TakeLog(), u"+bU");
    items.At(0)->SetCollection(nullptr);
    EXPECT_EQ(items.Names(), u"cd");
    const auto extracted = items.Extract(0);
    EXPECT_EQ(extracted->GetCollection(), nullptr);
    EXPECT_EQ(extracted->GetIndex(), -1);
    static_cast<TNamedItem*>(extracted.get())->SetName(u"free");
    EXPECT_EQ(items.Names(), u"d");
    delete items.At(0);  // leaves by itself
    EXPECT_EQ(items.GetCount(), 0);
    EXPECT_EQ(TNamedItem::Living, 3);
  }
  EXPECT_EQ(TNamedItem::Living, 0);
}

TEST(Collection, AssignMakesItemsLikeThose) {
  TNamedItems source;
  source.Add(u"abc");
  TNamedItems items;
  items.Add(u"xy");
  items.TakeLog();
  items.Assign(&source);
  EXPECT_EQ(items.Names(), u"abc");
  EXPECT_EQ(items.TakeLog().back(), u'U');
  items.Assign(&items);
  EXPECT_EQ(items.Names(), u"abc");
  items.SetItem(0, source.At(2));
  EXPECT_EQ(items.Names(), u"cbc");
  const TComponent other;
  EXPECT_THROW(items.Assign(&other), EConvertError);
  TCollection blank;
  EXPECT_THROW(blank.Add(), EInvalidOperation);
  EXPECT_THROW(blank.Assign(&source), EInvalidOperation);
  EXPECT_FALSE(blank.IsUpdating());
}

}  // namespace
}  // namespace oak::tests
