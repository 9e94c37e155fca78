#include "oak/framework/Component.h"

#include <gtest/gtest.h>

namespace oak {
namespace {

/// Keeps a list of what it is told, and of its own end.
class TLogging : public TComponent {
 public:
  TLogging(TComponent* owner, TString name, TStringArray& log) : TComponent(owner), fLog(log) {
    SetName(std::move(name));
  }
  ~TLogging() override {
    Destroying();
    fLog.push_back(u"~" + GetName());
  }
  TComponent* Friend = nullptr;

 protected:
  void Notification(TComponent* component, TOperation operation) override {
    TComponent::Notification(component, operation);
    if (operation != opRemove) return;
    fLog.push_back(GetName() + u": " + component->GetName() + u" leaves");
    if (component == Friend) Friend = nullptr;
  }

 private:
  TStringArray& fLog;
};

TEST(Component, OwnersDestroyLastFirst) {
  TStringArray log;
  {
    TComponent owner;
    new TLogging(&owner, u"a", log);
    auto* b = new TLogging(&owner, u"b", log);
    new TLogging(b, u"c", log);
    EXPECT_EQ(owner.GetComponentCount(), 2);
    EXPECT_EQ(owner.FindComponent(u"B"), b);
    EXPECT_EQ(owner.FindComponent(u"none"), nullptr);
  }
  EXPECT_EQ(log, (TStringArray{u"~b", u"~c", u"~a"}));
}

TEST(Component, ReferencesAreCutOnEitherSide) {
  TStringArray log;
  TLogging view(nullptr, u"view", log);
  {
    TLogging hub(nullptr, u"hub", log);
    view.Friend = &hub;
    view.FreeNotification(&hub);
    view.FreeNotification(&hub);
  }
  EXPECT_EQ(view.Friend, nullptr);
  EXPECT_EQ(log, (TStringArray{u"~hub", u"view: hub leaves"}));

  auto hub = std::make_unique<TLogging>(nullptr, u"hub", log);
  {
    TLogging early(nullptr, u"early", log);
    early.FreeNotification(hub.get());
    hub->Friend = &early;
  }
  EXPECT_EQ(hub->Friend, nullptr);
}

TEST(Component, ChangesItsOwnerAndTellsTheOthers) {
  TStringArray log;
  TComponent form;
  TComponent otherForm;
  auto* watcher = new TLogging(&form, u"watcher", log);
  auto* moved = new TLogging(&form, u"moved", log);
  watcher->Friend = moved;
  otherForm.InsertComponent(moved);
  EXPECT_EQ(moved->GetOwner(), &otherForm);
  EXPECT_EQ(watcher->Friend, nullptr);
  delete moved;
  EXPECT_EQ(otherForm.GetComponentCount(), 0);
}

TEST(Component, StatesReachTheOwned) {
  TStringArray log;
  TComponent form;
  auto* child = new TLogging(&form, u"child", log);
  form.BeginLoading();
  EXPECT_TRUE(child->GetComponentState().Contains(csLoading));
  child->Loaded();
  EXPECT_FALSE(child->GetComponentState().Contains(csLoading));
  EXPECT_TRUE(form.GetComponentState().Contains(csLoading));
  form.SetDesigning(true);
  auto* late = new TLogging(&form, u"late", log);
  EXPECT_TRUE(late->GetComponentState().Contains(csDesigning));
}

}  // namespace
}  // namespace oak
