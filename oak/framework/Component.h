// The roots of the component framework: TObject, TPersistent, TComponent.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "oak/base/Set.h"
#include "oak/base/Text.h"

namespace oak {

/// Root of all classes that are handed around as "some object".
class TObject {
 public:
  virtual ~TObject() = default;

 protected:
  TObject() = default;
  TObject(const TObject&) = default;
  TObject& operator=(const TObject&) = default;
};

/// Something happened to the sender.
using TNotifyEvent = std::function<void(TObject* Sender)>;

/// An object whose settings can be copied to another one.
class TPersistent : public TObject {
 public:
  /// Takes over the settings of `source`; nil or a class that neither side knows
  /// raises EConvertError.
  virtual void Assign(const TPersistent* source);

 protected:
  /// Copies own settings to `dest`: for classes that `dest` does not know.
  virtual void AssignTo(TPersistent* dest) const;
};

enum TComponentStateFlag : std::uint8_t {
  csLoading,     ///< Properties are being read; setters don't act yet.
  csDestroying,  ///< The end has begun: no new work.
  csDesigning    ///< Lives in a form designer.
};
using TComponentState = TSet<TComponentStateFlag>;

/// What TComponent::Notification tells of another component.
enum TOperation : std::uint8_t { opInsert, opRemove };

/// A named object that may own others and is told of the end of those it refers
/// to. Main thread only.
class TComponent : public TPersistent {
 public:
  /// An owner destroys the component unless that was destroyed before.
  explicit TComponent(TComponent* owner = nullptr);
  /// Tells all who asked, then destroys the owned components, last first.
  ~TComponent() override;
  TComponent(const TComponent&) = delete;
  TComponent& operator=(const TComponent&) = delete;

  TComponent* GetOwner() const noexcept { return fOwner; }
  int GetComponentCount() const noexcept { return static_cast<int>(fComponents.size()); }
  /// nil outside 0..GetComponentCount()-1.
  TComponent* GetComponent(int index) const noexcept;
  /// Owned component of that name, ignoring case, or nil.
  TComponent* FindComponent(TStringView name) const;
  /// Takes a component over; it leaves its present owner.
  void InsertComponent(TComponent* component);
  /// Gives an owned component free; any other is ignored.
  void RemoveComponent(TComponent* component);
  /// From now on each side is told by Notification(opRemove) of the other's end.
  void FreeNotification(TComponent* component);
  void RemoveFreeNotification(TComponent* component);

  TComponentState GetComponentState() const noexcept { return fComponentState; }
  /// Sets csLoading here and in owned components; Loaded() ends it.
  void BeginLoading();
  /// All properties have been read. An override calls its ancestor first.
  virtual void Loaded();
  void SetDesigning(bool value);

  const TString& GetName() const noexcept { return fName; }
  void SetName(TString name) { fName = std::move(name); }

 protected:
  /// `component` joined or is about to leave: drop references to it. An override
  /// calls its ancestor, which passes the news on to owned components.
  virtual void Notification(TComponent* component, TOperation operation);
  /// Sets csDestroying here and in owned components. The destructor of a class
  /// whose overrides must see the state calls it first; the root does it anyway.
  void Destroying() noexcept;
  /// Tells all who asked of this component's end. The destructor of a class whose users must let go
  /// of it while it is whole calls it first; the root does it anyway.
  void NotifyOfEnd() noexcept;

 private:
  void DestroyComponents() noexcept;

  TComponent* fOwner = nullptr;
  std::vector<TComponent*> fComponents;
  std::vector<TComponent*> fFreeNotifies;
  TComponentState fComponentState;
  TString fName;
};

}  // namespace oak
