// TCollection: an ordered set of items that are made and owned by it, as columns
// of a list or sections of a header are.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "oak/base/Exceptions.h"
#include "oak/framework/Component.h"

namespace oak {

/// An index outside a collection.
class EListError : public Exception {
  using Exception::Exception;
};

class TCollection;

/// One item. Made by its collection and owned by it. Main thread only.
class TCollectionItem : public TPersistent {
 public:
  TCollectionItem() = default;
  TCollectionItem(const TCollectionItem&) = delete;
  TCollectionItem& operator=(const TCollectionItem&) = delete;
  /// An item that is destroyed by itself leaves its collection first.
  ~TCollectionItem() override;

  /// nil for an item that was extracted.
  TCollection* GetCollection() const noexcept { return fCollection; }
  /// Moves the item to the end of another collection; nil destroys it.
  void SetCollection(TCollection* value);
  /// Place in the collection, -1 outside one.
  int GetIndex() const noexcept { return fIndex; }
  /// Moves the item; others close up. An index outside the collection raises
  /// EListError.
  virtual void SetIndex(int value);
  /// Unique in the collection and never given twice; -1 outside one.
  int GetID() const noexcept { return fID; }
  /// What a list of the items shows. Default: the index.
  virtual TString GetDisplayName() const;

 protected:
  /// A property changed: tells the collection, which redraws this item or, with
  /// `allItems`, everything.
  void Changed(bool allItems);

 private:
  friend class TCollection;
  TCollection* fCollection = nullptr;
  int fIndex = -1;
  int fID = -1;
};

/// What happens to an item of a collection.
enum TCollectionNotification : std::uint8_t {
  cnAdded,       ///< It has joined.
  cnExtracting,  ///< It is about to leave and lives on.
  cnDeleting     ///< It is about to leave and to be destroyed.
};

/// Owns items and keeps their order. Main thread only.
class TCollection : public TPersistent {
 public:
  /// Makes an item for that collection, which does not belong to it yet.
  using TItemFactory = std::function<std::unique_ptr<TCollectionItem>(TCollection*)>;
  /// A factory of items of class T, which are made without arguments or with their
  /// collection.
  template <class T>
  static TItemFactory FactoryOf() {
    return [](TCollection* collection) -> std::unique_ptr<TCollectionItem> {
      if constexpr (std::is_constructible_v<T, TCollection*>)
        return std::make_unique<T>(collection);
      else
        return std::make_unique<T>();
    };
  }

  /// Without factory, CreateItem must be overridden.
  explicit TCollection(TItemFactory factory = {}) : fFactory(std::move(factory)) {}
  TCollection(const TCollection&) = delete;
  TCollection& operator=(const TCollection&) = delete;
  /// Destroys the items, last first. A class that overrides Notify or Update and
  /// wants to hear of that calls Clear in its own destructor.
  ~TCollection() override;

  /// Whom the collection belongs to, or nil.
  virtual TPersistent* GetOwner() const { return nullptr; }
  int GetCount() const noexcept { return static_cast<int>(fItems.size()); }
  /// Raises EListError outside 0..GetCount()-1.
  TCollectionItem* GetItem(int index) const;
  TCollectionItem* operator[](int index) const { return GetItem(index); }
  /// Copies the settings of `source` to an item.
  void SetItem(int index, const TCollectionItem* source) { GetItem(index)->Assign(source); }
  /// nil if there is none.
  TCollectionItem* FindItemID(int id) const noexcept;

  /// Appends a new item.
  TCollectionItem* Add();
  /// Inserts a new item; `index` may be GetCount(), else EListError.
  TCollectionItem* Insert(int index);
  /// Destroys an item; a bad index raises EListError.
  void Delete(int index);
  /// Takes an item out; the caller owns it.
  std::unique_ptr<TCollectionItem> Extract(int index);
  /// Takes an item in, at the end.
  TCollectionItem* Adopt(std::unique_ptr<TCollectionItem> item);
  /// Destroys all items, last first, in linear time.
  void Clear();
  /// Makes items like those of another collection, in one update.
  void Assign(const TPersistent* source) override;

  /// Brackets changes: Update is called once, in the end. Nests.
  virtual void BeginUpdate();
  virtual void EndUpdate();
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
  /// Makes the item of Add and Insert. Default: the factory's.
  virtual std::unique_ptr<TCollectionItem> CreateItem();
  /// An item changed, or, with nil, any number of them or their order.
  virtual void Update(TCollectionItem* item);
  /// Told of each item that joins or leaves, while it is in the collection. Must
  /// not remove that item.
  virtual void Notify(TCollectionItem* item, TCollectionNotification action);
  /// Calls Update(nil) unless an update bracket is open.
  void Changed();

 private:
  friend class TCollectionItem;
  using TItems = std::vector<std::unique_ptr<TCollectionItem>>;

  void AbandonUpdate() noexcept;
  TCollectionItem* Join(std::unique_ptr<TCollectionItem> item, int index);
  std::unique_ptr<TCollectionItem> Leave(int index, TCollectionNotification action);
  std::unique_ptr<TCollectionItem> TakeOut(int index) noexcept;
  void Forget(TCollectionItem* item) noexcept;
  void MoveItem(int from, int to);
  void ItemChanged(TCollectionItem* item);
  void Renumber(int from, int to) noexcept;

  TItemFactory fFactory;
  TItems fItems;
  int fNextID = 0;
  int fUpdateCount = 0;
};

/// A collection that belongs to an object, such as a control.
class TOwnedCollection : public TCollection {
 public:
  explicit TOwnedCollection(TPersistent* owner, TItemFactory factory = {})
      : TCollection(std::move(factory)), fOwner(owner) {}
  TPersistent* GetOwner() const override { return fOwner; }

 private:
  TPersistent* fOwner;
};

}  // namespace oak
