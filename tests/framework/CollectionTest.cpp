#include "oak/framework/Collection.h"

#include <gtest/gtest.h>

namespace oak::tests {
namespace {

class TNamedItem : public TCollectionItem {
 public:
  ~TNamedItem() override { --Living; }
  TNamedItem() { ++Living; }
  const TString& GetName() const { return fName; }
  void SetName(TStringView value) { fName = value; }
  void Assign(const TPersistent* source) override {
    const auto* item = dynamic_cast<const TNamedItem*>(source);
    if (!item) return TCollectionItem::Assign(source);
    SetName(item->fName);
  }
  inline static int Living = 0;

 private:
  TString fName;
};

class TNamedItems : public TOwnedCollection {
 public:
  TNamedItems() : TOwnedCollection(nullptr, FactoryOf<TNamedItem>()) {}
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
};

TEST(Collection, KeepsIndexesWhateverMoves) {
  TNamedItems items;
  items.Add(u"abcde");
  items.At(0)->SetIndex(4);
  EXPECT_EQ(items.Names(), u"bcdea");
  items.At(3)->SetIndex(1);
  EXPECT_EQ(items.Names(), u"becda");
  items.Delete(1);
  static_cast<TNamedItem*>(items.Insert(0))->SetName(u"x");
  EXPECT_EQ(items.Names(), u"xbcda");
  for (const int bad : {-1, 6}) {
    EXPECT_THROW(items.Insert(bad), EListError);
    EXPECT_THROW(items.At(0)->SetIndex(bad), EListError);
  }
  EXPECT_EQ(items.Names(), u"xbcda");
}

TEST(Collection, IdentifiersAreNotGivenTwice) {
  TNamedItems items;
  items.Add(u"abc");
  const int id = items.At(2)->GetID();
  items.Delete(2);
  EXPECT_EQ(items.FindItemID(id), nullptr);
  items.Clear();
  items.Add(u"e");
  EXPECT_EQ(items.FindItemID(items.At(0)->GetID()), items.At(0));
  EXPECT_GT(items.At(0)->GetID(), id);
}

TEST(Collection, ItemsChangeHands) {
  TNamedItem::Living = 0;
  {
    TNamedItems items;
    TNamedItems others;
    items.Add(u"abcd");
    others.Add(u"x");
    items.At(1)->SetCollection(&others);
    EXPECT_EQ(items.Names(), u"acd");
    EXPECT_EQ(others.Names(), u"xb");
    items.At(0)->SetCollection(nullptr);
    EXPECT_EQ(items.Names(), u"cd");
    const auto extracted = items.Extract(0);
    EXPECT_EQ(extracted->GetCollection(), nullptr);
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
  items.Assign(&source);
  EXPECT_EQ(items.Names(), u"abc");
  items.Assign(&items);
  EXPECT_EQ(items.Names(), u"abc");
  items.SetItem(0, source.At(2));
  EXPECT_EQ(items.Names(), u"cbc");
  TCollection blank;  // cannot make items
  EXPECT_THROW(blank.Assign(&source), EInvalidOperation);
  EXPECT_FALSE(blank.IsUpdating());
}

}  // namespace
}  // namespace oak::tests
