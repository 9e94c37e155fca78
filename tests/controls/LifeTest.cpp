// Ends at the wrong moment: controls destroyed, emptied or given new windows in each of their own
// events, and forms closed while all kinds of things are under way.
#include "oak/base/Exceptions.h"
#include "oak/framework/Timer.h"
#include "tests/controls/ControlsFixture.h"

namespace oak::tests {
namespace {

/// A form with the control under test, another one for the keyboard to go to, and a hook that is
/// run at one event.
template <class T>
class TStage {
 public:
  explicit TStage(IScreenDriver& screen) : Screen(screen) {
    Form = new TForm;
    Form->SetPosition(poDesigned);
    Form->SetBounds(60, 40, 560, 380);
    Other = new TEdit(Form);
    Other->SetBounds(440, 10, 100, 24);
    Other->SetParent(Form);
    Control = new T(Form);
    Control->SetBounds(10, 10, 400, 240);
    Control->SetParent(Form);
    if constexpr (std::is_base_of_v<TCustomListView, T>)
      Control->SetSmallImages(fImages.get());
    else
      Control->SetImages(fImages.get());
    fGuard = Control->GetLifeGuard();
    fFormGuard = Form->GetLifeGuard();
  }
  ~TStage() {
    if (fFormGuard.IsAlive()) delete Form;
    Screen.Drain();
  }
  void Show() {
    Form->Show();
    Screen.Drain();
    Screen.Paint();
    Control->SetFocus();
    Screen.Drain();
  }
  bool IsAlive() const { return fGuard.IsAlive(); }
  bool FormIsAlive() const { return fFormGuard.IsAlive(); }

  IScreenDriver& Screen;
  TForm* Form;
  TEdit* Other;
  T* Control;

 private:
  std::unique_ptr<TImageList> fImages = MakeImages(16, 4);
  TLifeGuard fGuard;
  TLifeGuard fFormGuard;
};

template <class T>
struct TTrigger {
  std::string Event;  ///< Beginning of the event's name.
  std::function<void(TStage<T>&)> Do;
  bool SystemMayKeepIt = false;  ///< The system's control doesn't always tell it.
};

template <class T>
struct TDeed {
  const char* What;
  std::function<void(TStage<T>&)> Do;
};

template <class T>
std::vector<TDeed<T>> Deeds() {
  return {
      {"destroy the control", [](auto& stage) { delete stage.Control; }},
      {"destroy the form", [](auto& stage) { delete stage.Form; }},
      {"release the form", [](auto& stage) { stage.Form->Release(); }},
      {"close the form", [](auto& stage) { stage.Form->Close(); }},
      {"new window", [](auto& stage) { stage.Control->RecreateWnd(); }},
      {"new window of the form", [](auto& stage) { stage.Form->RecreateWnd(); }},
      {"clear", [](auto& stage) { stage.Control->Items().Clear(); }},
      {"hide", [](auto& stage) { stage.Control->SetVisible(false); }},
      {"disable", [](auto& stage) { stage.Control->SetEnabled(false); }},
      {"another parent",
       [](auto& stage) {
         stage.Control->SetParent(nullptr);
         stage.Control->SetParent(stage.Form);
       }},
  };
}

void Prepare(TListUnderTest& list) {
  list.SetViewStyle(vsReport);
  list.AddColumns({150, 80});
  list.Fill(6);
  list.DrawsAll = true;
}

void Prepare(TTreeUnderTest& tree) {
  tree.Build({u"a", u" a1", u" a2", u"b", u" b1"});
  tree.Node(u"b")->Expand(false);
  tree.DrawsAll = true;
}

void BeginEdit(TListUnderTest& list) { list.Row(1)->EditCaption(); }
void BeginEdit(TTreeUnderTest& tree) { tree.Node(u"b")->EditText(); }

/// The events that lists and trees have both.
template <class T>
std::vector<TTrigger<T>> CommonTriggers(bool systemMayKeepClicks) {
  const auto at = [](T& control) {
    if constexpr (std::is_base_of_v<TCustomListView, T>)
      return control.At(2);
    else
      return control.At(control.Node(u"b"));
  };
  const auto click = [at](auto& s) { s.Screen.Click(*s.Control, at(*s.Control)); };
  const auto edit = [](std::uint16_t key) {
    return [key](auto& s) {
      BeginEdit(*s.Control);
      if (s.IsAlive()) s.Screen.TypeText(u"new");
      if (s.IsAlive()) s.Screen.KeyPress(key);
    };
  };
  const auto repaint = [](auto& s) {
    s.Control->Invalidate();
    s.Screen.Paint();
  };
  return {
      {"select", click},
      {"mouse down", click},
      {"mouse up", click, systemMayKeepClicks},
      {"click", click, systemMayKeepClicks},
      {"double click", [at](auto& s) { s.Screen.DoubleClick(*s.Control, at(*s.Control)); }},
      {"key", [](auto& s) { s.Screen.KeyPress(vkDown); }},
      {"drag",
       [at](auto& s) {
         const TPoint from = at(*s.Control);
         s.Screen.Drag(*s.Control, from, *s.Control, from + TPoint(60, 40));
       }},
      {"menu", [at](auto& s) { s.Screen.RightClick(*s.Control, at(*s.Control)); }},
      {"edit?", edit(vkReturn)},
      {"edit new", edit(vkReturn)},
      {"edit cancelled", edit(vkEscape)},
      {"draw row", repaint},
      {"drawn row", repaint},
      {"exit", [](auto& s) { s.Other->SetFocus(); }},
      {"enter",
       [](auto& s) {
         s.Other->SetFocus();
         s.Control->SetFocus();
       }},
  };
}

class TBusyForm;

class ControlLife : public ::testing::Test {
 protected:
  using TMoment = std::pair<const char*, std::function<void(TBusyForm&)>>;
  std::vector<TMoment> Moments();
  void ExpectUsable(TBusyForm& form);
  std::unique_ptr<IScreenDriver> screen = MakeScreen();
};

/// One deed, by its number.
class ControlDeeds : public ControlLife, public ::testing::WithParamInterface<std::size_t> {
 protected:
  /// Does it in every event.
  template <class T>
  void Walk(std::vector<TTrigger<T>> triggers) {
    constexpr bool tree = std::is_base_of_v<TCustomTreeView, T>;
    for (TTrigger<T>& trigger : CommonTriggers<T>(tree)) triggers.push_back(std::move(trigger));
    screen->Drain();
    const int windows = screen->CountWindows();
    const TDeed<T> deed = Deeds<T>().at(GetParam());
    for (const TTrigger<T>& trigger : triggers) {
      SCOPED_TRACE(trigger.Event + ": " + deed.What);
      bool done = false;
      std::string seen;
      {
        TStage<T> stage(*screen);
        Prepare(*stage.Control);
        stage.Show();
        stage.Control->OnEvent = [&](const std::string& event) {
          seen += ", " + event;
          if (done || !event.starts_with(trigger.Event)) return;
          done = true;
          deed.Do(stage);
        };
        trigger.Do(stage);
        screen->Drain();
        screen->Paint();
        if (stage.IsAlive()) stage.Control->OnEvent = nullptr;
      }
      EXPECT_TRUE(done || (trigger.SystemMayKeepIt && screen->IsNative()))
          << "the event did not come" << seen;
      EXPECT_EQ(screen->CountWindows(), windows);
      if (HasFailure()) return;
    }
  }
};

TEST_P(ControlDeeds, ListInItsEvents) {
  if (screen->IsNative() && Deeds<TListUnderTest>()[GetParam()].What == std::string("clear"))
    GTEST_SKIP() << "Wine's list fails an assertion of its own when it loses its rows in an event";
  const auto onHeader = [](auto& s, int x) {
    return TPoint(x, s.Control->GetHeaderRect().Center().Y);
  };
  const auto drag = [onHeader](int from, int to) {
    return
        [=](auto& s) { s.Screen.Drag(*s.Control, onHeader(s, from), *s.Control, onHeader(s, to)); };
  };
  const auto repaint = [](auto& s) {
    s.Control->Invalidate();
    s.Screen.Paint();
  };
  Walk<TListUnderTest>({
      {"deselect",
       [](auto& s) {
         s.Control->SelectAll();
         s.Screen.Click(*s.Control, s.Control->At(2));
       }},
      {"char", [](auto& s) { s.Screen.TypeText(u"r"); }},
      {"search", [](auto& s) { s.Screen.TypeText(u"r"); }},
      {"column click", [=](auto& s) { s.Screen.Click(*s.Control, onHeader(s, 60)); }},
      {"column right", [=](auto& s) { s.Screen.RightClick(*s.Control, onHeader(s, 60)); }},
      {"column size", drag(149, 190)},
      {"column drag?", drag(60, 210)},
      {"column drag 0", drag(60, 210)},
      {"image", repaint},
      {"text", repaint},
      {"draw all", repaint},
      {"draw cell", repaint},
      {"drawn cell", repaint},
      {"drawn all", repaint},
      {"resize", [](auto& s) { s.Control->SetWidth(300); }},
      {"change", [](auto& s) { s.Control->Row(0)->SetCaption(u"changed"); }},
  });
}

TEST_P(ControlDeeds, TreeInItsEvents) {
  const auto button = [](TStringView name) {
    return
        [name](auto& s) { s.Screen.Click(*s.Control, s.Control->AtButton(s.Control->Node(name))); };
  };
  Walk<TTreeUnderTest>({
      {"selected",
       [](auto& s) { s.Screen.Click(*s.Control, s.Control->At(s.Control->Node(u"b"))); }},
      {"expand?", button(u"a")},
      {"expanded", button(u"a")},
      {"collapse?", button(u"b")},
      {"collapsed", button(u"b")},
      {"delete", [](auto& s) { s.Control->Node(u"b")->Delete(); }},
      {"delete", [](auto& s) { s.Control->Items().Clear(); }},
      {"add", [](auto& s) { s.Control->Items().Add(nullptr, u"c"); }},
  });
}

INSTANTIATE_TEST_SUITE_P(All, ControlDeeds,
                         ::testing::Range(std::size_t{0}, Deeds<TListUnderTest>().size()));

// --- forms --------------------------------------------------------------------------------------

/// A form with a bit of everything.
class TBusyForm : public TForm {
 public:
  TBusyForm() {
    SetPosition(poDesigned);
    SetBounds(60, 40, 560, 380);
    List = new TListUnderTest(this);
    List->SetBounds(220, 40, 300, 200);
    Prepare(*List);
    List->SetParent(this);
    Tree = new TTreeUnderTest(this);
    Tree->SetBounds(10, 40, 200, 200);
    Prepare(*Tree);
    Tree->SetParent(this);
    Edit = new TEdit(this);
    Edit->SetParent(this);
    Timer = new TTimer(this);
    Timer->SetInterval(10);
    Timer->OnTimer = [this](TObject*) {
      ++Ticks;
      if (OnTick) OnTick();
    };
  }
  ~TBusyForm() override { BeginDestroy(); }
  TListUnderTest* List;
  TTreeUnderTest* Tree;
  TEdit* Edit;
  TTimer* Timer;
  int Ticks = 0;
  int Received = 0;
  std::function<void()> OnTick;
  std::function<void()> OnPosted;

 protected:
  void WndProc(TMessage& message) override {
    if (message.Msg == FirstPrivateMessage) {
      ++Received;
      if (OnPosted) OnPosted();
      return;
    }
    TForm::WndProc(message);
  }
};

// What may be under way.
std::vector<ControlLife::TMoment> ControlLife::Moments() {
  return {
      {"at rest", [](auto&) {}},
      {"messages wait",
       [](auto& form) {
         for (int i = 0; i < 5; ++i) form.PostMessage(FirstPrivateMessage);
       }},
      {"rows and nodes come in brackets",
       [](auto& form) {
         form.List->Items().BeginUpdate();
         form.Tree->Items().BeginUpdate();
         form.List->Fill(20);
         form.Tree->Items().Add(nullptr, u"c");
       }},
      {"a row is edited", [](auto& form) { form.List->Row(1)->EditCaption(); }},
      {"a node is edited", [](auto& form) { form.Tree->Find(u"b")->EditText(); }},
      {"a row is pressed", [this](auto& form) { screen->MouseDown(*form.List, form.List->At(2)); }},
      {"a column is pressed",
       [this](auto& form) {
         screen->MouseDown(*form.List, {40, form.List->GetHeaderRect().Center().Y});
       }},
      {"a change of the tree is due",
       [](auto& form) {
         form.Tree->SetChangeDelay(5);
         form.Tree->SetSelected(form.Tree->Find(u"b"));
       }},
      {"scrolled",
       [](auto& form) {
         form.List->Fill(40);
         form.List->Row(30)->MakeVisible(false);
       }},
      {"hidden",
       [](auto& form) {
         form.List->SetVisible(false);
         form.Tree->SetVisible(false);
       }},
      {"minimised", [this](auto& form) { screen->SetWindowState(form, wsMinimized); }},
  };
}

// Puts an end to what is under way and works the form: all must be as it is with the first window.
void ControlLife::ExpectUsable(TBusyForm& form) {
  screen->MouseUp();
  while (form.List->Items().IsUpdating()) form.List->Items().EndUpdate();
  while (form.Tree->Items().IsUpdating()) form.Tree->Items().EndUpdate();
  screen->SetWindowState(form, wsNormal);
  form.List->EndEditing(true);
  if (TTreeNode* const edited = form.Tree->GetEditedNode()) edited->EndEdit(true);
  form.List->SetVisible(true);
  form.Tree->SetVisible(true);
  screen->Advance(30);
  EXPECT_FALSE(form.List->IsEditing());
  EXPECT_FALSE(form.Tree->IsEditing());
  EXPECT_EQ(screen->CountRows(*form.List), form.List->Items().GetCount());
  const int top = form.List->GetTopItem()->GetIndex();
  screen->Click(*form.List, form.List->At(top + 1));
  EXPECT_EQ(screen->Focused(), form.List);
  EXPECT_EQ(form.List->GetSelected(), form.List->Row(top + 1));
  EXPECT_TRUE(screen->RowOf(*form.List, top + 1).Marked);
  screen->Click(*form.Tree, form.Tree->AtButton(form.Tree->Find(u"a")));
  EXPECT_TRUE(form.Tree->Find(u"a")->GetExpanded());
  screen->Click(*form.Tree, form.Tree->At(form.Tree->Find(u"b")));
  EXPECT_EQ(form.Tree->GetSelected(), form.Tree->Find(u"b"));
  EXPECT_EQ(static_cast<int>(screen->NodesOf(*form.Tree).size()), form.Tree->Items().GetCount());
}

TEST_F(ControlLife, FormsEndWhileThingsAreUnderWay) {
  const std::vector<std::pair<const char*, std::function<void(TBusyForm*)>>> ends{
      {"destroyed", [](TBusyForm* form) { delete form; }},
      {"released", [](TBusyForm* form) { form->Release(); }},
      {"closed by the user",
       [this](TBusyForm* form) {
         form->OnClose = [](TObject*, TCloseAction& action) { action = caFree; };
         screen->CloseWindow(*form);
       }},
      {"window lost and found",
       [this](TBusyForm* form) {
         form->RecreateWnd();
         screen->Drain();
         delete form;
       }},
      {"destroyed by its timer",
       [this](TBusyForm* form) {
         form->OnTick = [form] { delete form; };
         screen->Advance(50);
       }},
      {"destroyed by its message",
       [this](TBusyForm* form) {
         form->OnPosted = [form] { delete form; };
         form->PostMessage(FirstPrivateMessage);
         screen->Drain();
       }},
  };
  screen->Drain();
  const int windows = screen->CountWindows();
  for (const auto& [work, begin] : Moments()) {
    for (const auto& [what, end] : ends) {
      SCOPED_TRACE(std::string(work) + ", " + what);
      auto* form = new TBusyForm;
      const TLifeGuard guard = form->GetLifeGuard();
      form->Show();
      screen->Drain();
      form->List->SetFocus();
      begin(*form);
      end(form);
      screen->Drain();
      screen->Advance(30);
      EXPECT_FALSE(guard.IsAlive());
      EXPECT_EQ(screen->CountWindows(), windows);
      screen->MouseUp();
    }
  }
}

TEST_F(ControlLife, WhatHandlersThrowIsReported) {
  TBusyForm form;
  form.Show();
  screen->Drain();
  form.List->DrawsAll = form.Tree->DrawsAll = false;
  const auto fail = [](TObject*, auto&&...) { throw EInvalidOperation(u"by the test"); };
  form.List->OnSelectItem = fail;
  screen->Click(*form.List, form.List->At(1));
  form.List->OnSelectItem = nullptr;
  form.List->OnEditing = fail;
  EXPECT_FALSE(form.List->Row(1)->EditCaption());
  form.Tree->OnExpanding = fail;
  screen->Click(*form.Tree, form.Tree->AtButton(form.Tree->Find(u"a")));
  EXPECT_FALSE(form.Tree->Find(u"a")->GetExpanded());
  form.Tree->OnChanging = fail;
  screen->Click(*form.Tree, form.Tree->At(form.Tree->Find(u"b")));
  EXPECT_FALSE(form.Tree->Find(u"b")->GetSelected());
  form.Edit->OnChange = fail;
  form.Edit->SetFocus();
  screen->TypeText(u"x");
  EXPECT_EQ(form.Edit->GetText(), u"x");
  form.OnTick = [&] {
    form.OnTick = nullptr;
    fail(nullptr);
  };
  screen->Advance(50);
  const std::vector<TString> exceptions = screen->TakeExceptions();
  EXPECT_EQ(exceptions.size(), 6u);
  for (const TString& text : exceptions) EXPECT_EQ(text, u"by the test");
}

TEST_F(ControlLife, WindowsAreMadeAnewAtEveryMoment) {
  const std::vector<TMoment> deeds{
      {"list", [](TBusyForm& form) { form.List->RecreateWnd(); }},
      {"tree", [](TBusyForm& form) { form.Tree->RecreateWnd(); }},
      {"form", [](TBusyForm& form) { form.RecreateWnd(); }},
      {"twice",
       [](TBusyForm& form) {
         form.RecreateWnd();
         form.List->RecreateWnd();
       }},
  };
  for (const auto& [moment, begin] : Moments()) {
    for (const auto& [deed, renew] : deeds) {
      SCOPED_TRACE(std::string(moment) + ": " + deed);
      TBusyForm form;
      form.Show();
      screen->Drain();
      form.List->SetFocus();
      begin(form);
      renew(form);
      ExpectUsable(form);
    }
  }
}

TEST_F(ControlLife, MessagesAndTimersOfAFormWithANewWindow) {
  TBusyForm form;
  form.Show();
  screen->Drain();
  // Messages for the former window are lost, those for the new one come.
  form.PostMessage(FirstPrivateMessage);
  form.RecreateWnd();
  form.PostMessage(FirstPrivateMessage);
  screen->Drain();
  EXPECT_EQ(form.Received, 1);
  const int ticks = form.Ticks;
  screen->Advance(60);
  EXPECT_GT(form.Ticks, ticks);
}

}  // namespace
}  // namespace oak::tests
