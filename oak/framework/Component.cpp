#include "oak/framework/Component.h"

#include <algorithm>
#include <typeinfo>

#include "oak/base/Exceptions.h"

namespace oak {
namespace {

TString ClassName(const TPersistent* object) {
  return object ? FromUtf8(typeid(*object).name()) : TString(u"nil");
}

void Erase(std::vector<TComponent*>& list, TComponent* component) {
  list.erase(std::remove(list.begin(), list.end(), component), list.end());
}

}  // namespace

void TPersistent::Assign(const TPersistent* source) {
  if (!source) throw EConvertError(u"Cannot assign a nil to a " + ClassName(this) + u".");
  source->AssignTo(this);
}

void TPersistent::AssignTo(TPersistent* dest) const {
  throw EConvertError(u"Cannot assign a " + ClassName(this) + u" to a " + ClassName(dest) + u".");
}

TComponent::TComponent(TComponent* owner) {
  if (owner) owner->InsertComponent(this);
}

TComponent::~TComponent() {
  Destroying();
  NotifyOfEnd();
  DestroyComponents();
  if (fOwner) fOwner->RemoveComponent(this);
}

TComponent* TComponent::GetComponent(int index) const noexcept {
  return index >= 0 && index < GetComponentCount() ? fComponents[static_cast<std::size_t>(index)]
                                                   : nullptr;
}

TComponent* TComponent::FindComponent(TStringView name) const {
  if (name.empty()) return nullptr;
  for (TComponent* component : fComponents)
    if (SameText(component->fName, name)) return component;
  return nullptr;
}

void TComponent::InsertComponent(TComponent* component) {
  if (!component || component == this || component->fOwner == this) return;
  if (component->fOwner) component->fOwner->RemoveComponent(component);
  fComponents.push_back(component);
  component->fOwner = this;
  if (fComponentState.Contains(csDesigning)) component->SetDesigning(true);
  Notification(component, opInsert);
}

void TComponent::RemoveComponent(TComponent* component) {
  if (!component || component->fOwner != this) return;
  Notification(component, opRemove);
  Erase(fComponents, component);
  component->fOwner = nullptr;
}

void TComponent::FreeNotification(TComponent* component) {
  if (!component || component == this) return;
  if (std::find(fFreeNotifies.begin(), fFreeNotifies.end(), component) != fFreeNotifies.end())
    return;
  fFreeNotifies.push_back(component);
  component->fFreeNotifies.push_back(this);
}

void TComponent::RemoveFreeNotification(TComponent* component) {
  if (!component) return;
  Erase(fFreeNotifies, component);
  Erase(component->fFreeNotifies, this);
}

void TComponent::BeginLoading() {
  fComponentState.Include(csLoading);
  for (TComponent* component : fComponents) component->BeginLoading();
}

void TComponent::Loaded() { fComponentState.Exclude(csLoading); }

void TComponent::SetDesigning(bool value) {
  if (value)
    fComponentState.Include(csDesigning);
  else
    fComponentState.Exclude(csDesigning);
  for (TComponent* component : fComponents) component->SetDesigning(value);
}

void TComponent::Notification(TComponent* component, TOperation operation) {
  if (operation == opRemove) RemoveFreeNotification(component);
  // An override may change the list that it is called from.
  const std::vector<TComponent*> owned = fComponents;
  for (TComponent* child : owned) {
    const bool isStillOwned =
        std::find(fComponents.begin(), fComponents.end(), child) != fComponents.end();
    if (isStillOwned && child != component) child->Notification(component, operation);
  }
}

void TComponent::Destroying() noexcept {
  if (fComponentState.Contains(csDestroying)) return;
  fComponentState.Include(csDestroying);
  for (TComponent* component : fComponents) component->Destroying();
}

void TComponent::NotifyOfEnd() noexcept {
  while (!fFreeNotifies.empty()) {
    TComponent* other = fFreeNotifies.back();
    RemoveFreeNotification(other);
    try {
      other->Notification(this, opRemove);
    } catch (...) {
      // The end can't be refused.
    }
  }
}

void TComponent::DestroyComponents() noexcept {
  while (!fComponents.empty()) {
    TComponent* component = fComponents.back();
    fComponents.pop_back();
    component->fOwner = nullptr;
    delete component;
  }
}

}  // namespace oak
