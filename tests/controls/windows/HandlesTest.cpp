// Windows and handles after many forms.
#include "oak/framework/Menus.h"
#include "oak/framework/Timer.h"
#include "tests/controls/ControlsFixture.h"
#include "tests/framework/windows/HandleCount.h"

namespace oak::tests {
namespace {

/// A form with all kinds of controls.
class TFullForm : public TForm {
 public:
  TFullForm() : Images(MakeImages(16, 4)) {
    SetPosition(poDesigned);
    SetBounds(60, 40, 560, 380);
    Place(Panel, {0, 0, 500, 40}, this);
    Place(Label, {5, 5, 60, 30}, &Panel);
    Place(Edit, {70, 5, 150, 30}, &Panel);
    Place(Button, {160, 5, 220, 30}, &Panel);
    Place(Combo, {230, 5, 330, 30}, &Panel);
    Place(Tree, {0, 40, 150, 200}, this);
    Place(Splitter, {150, 40, 155, 200}, this);
    Place(List, {155, 40, 500, 200}, this);
    Place(Memo, {0, 205, 200, 300}, this);
    Place(Rich, {205, 205, 400, 300}, this);
    Combo.SetImages(Images.get());
    Combo.AddItem({u"one", 0, -1, 0, nullptr});
    Tree.SetImages(Images.get());
    Tree.Items().AddChild(Tree.Items().Add(nullptr, u"root"), u"child");
    List.SetSmallImages(Images.get());
    List.SetViewStyle(vsReport);
    List.AddColumns({100, 100});
    List.SetCheckboxes(true);
    List.Fill(20);
    Menu.Items().Add(u"Entry");
    Menu.GetHandle();
    List.SetPopupMenu(&Menu);
    Timer.SetInterval(5);
  }
  ~TFullForm() override { BeginDestroy(); }
  void Place(TWinControl& control, const TRect& bounds, TWinControl* parent) {
    control.SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
    control.SetParent(parent);
  }
  std::unique_ptr<TImageList> Images;
  TPopupMenu Menu;
  TPanel Panel;
  TLabel Label;
  TEdit Edit;
  TButton Button;
  TCustomComboBoxEx Combo;
  TTreeUnderTest Tree;
  TSplitter Splitter;
  TListUnderTest List;
  TMemo Memo;
  TRichEdit Rich;
  TTimer Timer;
};

struct TResources {
  int Windows = 0;
  int Gdi = 0;
  int User = 0;
  int Kernel = 0;
  friend bool operator==(const TResources&, const TResources&) = default;
};

void PrintTo(const TResources& resources, std::ostream* out) {
  *out << resources.Windows << " windows, " << resources.Gdi << " GDI, " << resources.User
       << " user, " << resources.Kernel << " kernel";
}

class Handles : public ::testing::Test {
 protected:
  TResources Count() {
    TResources resources;
    resources.Windows = screen->CountWindows();
    resources.Gdi = CountGdiHandles();
    resources.User = static_cast<int>(::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS));
    DWORD handles = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
    resources.Kernel = static_cast<int>(handles);
    return resources;
  }
  void Round(int number) {
    TFullForm form;
    form.Show();
    screen->Drain();
    if (number % 4 == 1) {
      form.List.Row(1)->EditCaption();
      screen->Drain();
    }
    if (number % 4 == 2) form.RecreateWnd();
    if (number % 4 == 3) {
      form.List.SetViewStyle(vsIcon);
      screen->Paint();
    }
  }
  std::unique_ptr<IScreenDriver> screen = MakeScreen();
};

TEST_F(Handles, DoNotGrow) {
  constexpr int warmUp = 8;
  constexpr int rounds = 100;  // a thousand took 155 seconds under Wine and left nothing either
  for (int i = 0; i < warmUp; ++i) Round(i);
  const TResources before = Count();
  for (int i = 0; i < rounds; ++i) Round(i);
  screen->Drain();
  EXPECT_EQ(Count(), before);
}

}  // namespace
}  // namespace oak::tests
