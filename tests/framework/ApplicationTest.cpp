#include "oak/base/Exceptions.h"
#include "oak/framework/Dialogs.h"
#include "oak/framework/Host.h"
#include "oak/framework/Styles.h"
#include "oak/framework/Timer.h"
#include "tests/framework/ControlFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

class ApplicationTest : public TScreenTest {};

TEST_F(ApplicationTest, TheApplicationRunsUntilItsMainFormCloses) {
  auto& main = Application().CreateForm<TProbeForm>();
  auto& other = Application().CreateForm<TProbeForm>();
  EXPECT_EQ(Application().GetMainForm(), &main);
  int idle = 0;
  Application().OnIdle = [&](TObject*, bool& done) {
    done = ++idle < 3;
    if (idle == 2) other.Show();
    if (idle == 3) screen->Later([] { throw EInvalidOperation(u"In the loop"); });
    if (idle == 4) main.Close();
  };
  Application().Run();
  Application().OnIdle = nullptr;
  EXPECT_EQ(idle, 4);
  EXPECT_EQ(Screen().GetFormCount(), 0) << "its forms end with it";
  EXPECT_EQ(Application().GetMainForm(), nullptr);
  EXPECT_THAT(screen.Exceptions(), ElementsAre(u"In the loop"));
  screen.Exceptions().clear();
}

TEST_F(ApplicationTest, TheLowerUnitsLearnOfTheApplication) {
  EXPECT_FALSE(Host().IsInteractive());
  TProbeForm form;
  auto* control = new TWatchedControl(&form);
  EXPECT_EQ(Host().WindowOf(control), nullptr);
  form.Show();
  EXPECT_TRUE(Host().IsInteractive());
  EXPECT_EQ(Host().ApplicationWindow(), form.GetHandle());
  EXPECT_EQ(Host().WindowOf(control), control->GetHandle());
}

TEST_F(ApplicationTest, AsksInDialogs) {
  TProbeForm form;
  form.Show();
  Application().SetTitle(u"Title");
  screen->QueueDialogAnswer(mrNo);
  EXPECT_EQ(TaskMessageDlg(u"Head", u"Body", mtWarning, {mbYes, mbNo}), mrNo);
  const TMessageDialog shown = screen->GetDialogs().back().Dialog;
  EXPECT_EQ(shown.Owner, form.GetHandle());
  EXPECT_EQ(shown.DefaultButton, mrYes) << "mbOK is not there: the first one";

  struct TCase {
    std::uint32_t Flags;
    TMsgDlgButtons Buttons;
    TModalResult Default;
    TMsgDlgType Kind;
  };
  const TCase cases[] = {{0x00, {mbOK}, mrOk, mtCustom},
                         {0x213, {mbYes, mbNo, mbCancel}, mrCancel, mtError},
                         {0x45, {mbRetry, mbCancel}, mrRetry, mtInformation}};
  for (const TCase& c : cases) {
    screen->QueueDialogAnswer(c.Default);
    EXPECT_EQ(Application().MessageBox(u"Text", {}, c.Flags), c.Default);
    const TMessageDialog dialog = screen->GetDialogs().back().Dialog;
    EXPECT_EQ(dialog.Title, u"Title");
    EXPECT_EQ(dialog.Buttons, c.Buttons.ToBits()) << c.Flags;
    EXPECT_EQ(dialog.DefaultButton, c.Default) << c.Flags;
    EXPECT_EQ(dialog.Kind, c.Kind) << c.Flags;
  }
  screen->QueueDialogAnswer(mrOk);
  const auto failure = std::make_exception_ptr(EInvalidOperation(u"Broken"));
  Application().ShowException(failure);
  EXPECT_EQ(screen->GetDialogs().back().Dialog.Text, u"Broken");
  const std::size_t count = screen->GetDialogs().size();
  form.Hide();
  Application().ShowException(failure);
  EXPECT_EQ(screen->GetDialogs().size(), count) << "without forms nobody is there to read it";
  Application().SetTitle({});
}

TEST_F(ApplicationTest, StylesColourWhatIsDrawn) {
  TProbeForm form;
  auto* control = new TWatchedControl(&form);
  form.Show();
  screen->Paint();
  const TColor before = ColorToRGB(clWindow);
  int told = 0;
  auto watch = TStyleManager::OnChange([&] { ++told; });
  const int painted = control->Painted;
  EXPECT_FALSE(TStyleManager::TrySetStyle(u"Nothing"));
  ASSERT_TRUE(TStyleManager::TrySetStyle(u"dark"));
  screen->Paint();
  EXPECT_GT(control->Painted, painted);
  EXPECT_EQ(told, 1);
  EXPECT_NE(ColorToRGB(clWindow), before);
  EXPECT_EQ(TStyleManager::SystemStyle().GetSystemColor(clWindow), before);
  // No text disappears.
  for (const TColor text : {clWindowText, clBtnText, clGrayText, clMenuText})
    for (const TColor back : {clWindow, clBtnFace, clMenu})
      EXPECT_NE(ColorToRGB(text), ColorToRGB(back));
  watch.reset();
  ASSERT_TRUE(TStyleManager::TrySetStyle(u"System"));
  EXPECT_EQ(told, 1);
  EXPECT_EQ(ColorToRGB(clWindow), before);
}

TEST_F(ApplicationTest, TimersTickOnlyForTheirPresentInterval) {
  TTimer timer;
  int ticks = 0;
  timer.OnTimer = [&](TObject*) { ++ticks; };
  timer.SetInterval(60);
  screen.Advance(59);
  timer.Restart();
  screen.Advance(59);
  EXPECT_EQ(ticks, 0);
  screen.Advance(1);
  EXPECT_EQ(ticks, 1);
  timer.SetInterval(0);
  screen.Advance(500);
  EXPECT_EQ(ticks, 1);

  // One that ends itself, and one that ends another that is due at the same moment.
  auto* own = new TTimer;
  bool ended = false;
  own->SetInterval(10);
  own->OnTimer = [&](TObject*) {
    delete own;
    ended = true;
  };
  screen.Advance(10);
  EXPECT_TRUE(ended);
  // The first goes on alone.
  TTimer a, b;
  int fired = 0;
  a.OnTimer = [&](TObject*) { ++fired, b.SetEnabled(false); };
  b.OnTimer = [&](TObject*) { ++fired, a.SetEnabled(false); };
  a.SetInterval(10);
  b.SetInterval(10);
  screen.Advance(30);
  EXPECT_EQ(fired, 3);
}

}  // namespace
}  // namespace oak::tests
