// What the driver promises to tests of forms besides input and sight.
#include "oak/base/Exceptions.h"
#include "oak/framework/Dialogs.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

using TMaker = std::unique_ptr<IScreenDriver> (*)(testkit::TScreenFailure);

class ScreenDriver : public ::testing::TestWithParam<TMaker> {
 protected:
  ScreenDriver() {
    form->SetPosition(poDesigned);
    form->SetBounds(60, 40, 300, 200);
    edit->SetParent(form.get());
  }

  std::vector<std::string> faults;
  std::unique_ptr<IScreenDriver> screen =
      GetParam()([this](const std::string& text) { faults.push_back(text); });
  std::unique_ptr<TForm> form = std::make_unique<TForm>();
  TEdit* edit = new TEdit;
};

TEST_P(ScreenDriver, AnswersComeBeforeTheQuestions) {
  // Loops that the test itself begins.
  screen->Later([&] {
    screen->TypeText(u"abc");
    screen->Later([&] { form->SetModalResult(mrYes); });
  });
  form->SetActiveControl(edit);
  EXPECT_EQ(form->ShowModal(), mrYes);
  EXPECT_EQ(edit->GetText(), u"abc");
  screen->QueueDialogAnswer(mrNo);
  screen->QueueDialogAnswer(mrCancel);
  EXPECT_EQ(MessageDlg(u"Text", mtConfirmation, {mbYes, mbNo}), mrNo);
  EXPECT_EQ(MessageDlg(u"Text", mtWarning, {mbOK, mbCancel}), mrCancel);

  // One that an input begins.
  int answer = 0;
  edit->OnKeyPress = [&](TObject*, char16_t&) {
    answer = TaskMessageDlg(u"Instruction", u"Text", mtConfirmation, {mbYes, mbNo}, mbNo);
  };
  form->Show();
  screen->QueueDialogAnswer(mrYes);
  screen->TypeText(u"d");
  EXPECT_EQ(answer, mrYes);
  EXPECT_THAT(faults, ElementsAre());
}

TEST_P(ScreenDriver, TellsWhatWentWrong) {
  edit->OnChange = [](TObject*) { throw EInvalidOperation(u"by the test"); };
  form->Show();
  edit->SetFocus();
  screen->TypeText(u"x");
  EXPECT_THAT(screen->TakeExceptions(), ElementsAre(u"by the test"));
  screen->TypeText(u"y");
  screen->QueueMenuChoice(u"Open");
  screen->QueueDialogAnswer(mrOk);
  form.reset();
  screen.reset();
  EXPECT_THAT(faults, ::testing::UnorderedElementsAre("An exception was not handled: by the test",
                                                      "2 answers that nobody asked for"));
}

INSTANTIATE_TEST_SUITE_P(All, ScreenDriver,
                         ::testing::Values(&testkit::MakeScreenDriver,
                                           &testkit::MakeHeadlessScreenDriver));

}  // namespace
}  // namespace oak::tests
