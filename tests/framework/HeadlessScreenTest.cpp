#include "testkit/HeadlessForms.h"

#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/framework/Forms.h"
#include "oak/platform/MenuTable.h"

namespace oak::tests {
namespace {

using testkit::THeadlessScreen;
using TTexts = std::vector<std::string>;

TEST(HeadlessScreen, TellsWhatATestLeavesBehind) {
  TTexts faults;
  TWidgetSet& former = WidgetSet();
  std::unique_ptr<TForm> form;
  std::unique_ptr<ITimerPeer> timer;
  HMENU menu = nullptr;
  {
    THeadlessScreen screen([&](const std::string& text) { faults.push_back(text); });
    EXPECT_EQ(&WidgetSet(), &screen.Desktop());
    form = std::make_unique<TForm>();
    form->Show();
    timer = screen->CreateTimer(10, [] {});
    menu = TMenuTable::Instance().Create();
    screen->QueueMenuChoice(u"Open");
    screen->SetAutoRun(false);
    screen->Later([] { throw EInvalidOperation(u"thrown"); });
    EXPECT_TRUE(screen.Exceptions().empty());
    // It is still to be run: the screen does so at its end. The window can't outlive it.
    EXPECT_EQ(screen.GetFaults().size(), 5u);
    screen.Drain();
    faults.clear();
    for (const TString& fault : screen.GetFaults()) faults.push_back(ToUtf8(fault));
    form.reset();
    timer.reset();
  }
  EXPECT_EQ(faults[0], "An exception was not handled: thrown");
  EXPECT_EQ(faults[1], "1 answers that nobody asked for");
  EXPECT_EQ(faults[2], "1 windows that were not destroyed");
  EXPECT_EQ(faults[3], "1 timers that still run");
  EXPECT_EQ(faults[4], "1 menus that were not destroyed");
  // At the end what was put in order meanwhile is no fault any more.
  EXPECT_EQ(TTexts(faults.begin() + 5, faults.end()), (TTexts{faults[0], faults[1], faults[4]}));
  EXPECT_EQ(&WidgetSet(), &former);
  TMenuTable::Instance().Destroy(menu);
}

}  // namespace
}  // namespace oak::tests
