#include "oak/framework/headless/HeadlessDrag.h"

#include "tests/EmptyObjects.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {
namespace {

using testkit::THeadlessScreen;

constexpr DWORD Copy = 1, Move = 2;

/// The usual rules of a source, written down.
class TSource : public TInterfacedObject<IDropSource> {
 public:
  explicit TSource(TLog& log) : fLog(log) {}
  HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escape, DWORD keys) override {
    if (escape) return DRAGDROP_S_CANCEL;
    return (keys & 3) == 0 ? DRAGDROP_S_DROP : S_OK;
  }
  HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD effect) override {
    fLog.push_back("feedback " + std::to_string(effect));
    return DRAGDROP_S_USEDEFAULTCURSORS;
  }

 private:
  TLog& fLog;
};

class TTarget : public TInterfacedObject<IDropTarget> {
 public:
  TTarget(TLog& log, std::string name, DWORD effect)
      : fLog(log), fName(std::move(name)), fEffect(effect) {}
  HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL point,
                                      DWORD* effect) override {
    EXPECT_NE(data, nullptr);
    return Answer("enter", keys, point, effect);
  }
  HRESULT STDMETHODCALLTYPE DragOver(DWORD keys, POINTL point, DWORD* effect) override {
    return Answer("over", keys, point, effect);
  }
  HRESULT STDMETHODCALLTYPE DragLeave() override {
    fLog.push_back(fName + " leave");
    if (OnCall) OnCall("leave");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Drop(IDataObject*, DWORD keys, POINTL point, DWORD* effect) override {
    return Answer("drop", keys, point, effect);
  }
  std::function<void(const std::string&)> OnCall;

 private:
  HRESULT Answer(const char* what, DWORD keys, POINTL point, DWORD* effect) {
    fLog.push_back(fName + " " + what + " " + std::to_string(keys) + " " + std::to_string(point.x) +
                   "," + std::to_string(point.y));
    *effect = fEffect;
    if (OnCall) OnCall(what);
    return S_OK;
  }
  TLog& fLog;
  std::string fName;
  DWORD fEffect;
};

/// A form at 0, 0 without a frame: a source on the left, targets in the middle and on the right.
struct TDragFixture {
  THeadlessScreen Screen{FailWith};
  TLog Log;
  Ref<TTarget> MiddleTarget = Ref<TTarget>::Adopt(new TTarget(Log, "middle", Move));
  Ref<TTarget> RightTarget = Ref<TTarget>::Adopt(new TTarget(Log, "right", 0));
  TProbeForm Form;
  TProbe Left{Form, {0, 0, 100, 100}, "left"};
  std::unique_ptr<TProbe> Middle = std::make_unique<TProbe>(Form, TRect{100, 0, 200, 100}, "m");
  TProbe Right{Form, {200, 0, 300, 100}, "right"};
  HRESULT Result = E_FAIL;
  DWORD Effect = 99;
  int Drags = 0;

  TDragFixture() {
    Form.SetFormBorderStyle(bsFormNone);
    Form.SetBounds(0, 0, 400, 300);
    Middle->SetDropTarget(MiddleTarget.Get());
    Right.SetDropTarget(RightTarget.Get());
    Left.OnLine = [this](const std::string& line) {
      if (line.starts_with("move") && Left.GetMouseCapture() && Drags++ == 0) Begin();
    };
    Form.Show();
    Screen.Drain();
  }
  void Begin() {
    // Who drags what is not the desktop's business.
    const auto data = Ref<IDataObject>::Adopt(new TEmptyDataObject<>);
    const auto source = Ref<IDropSource>::Adopt(new TSource(Log));
    Result = Screen->DoDragDrop(Left, data.Get(), source.Get(), Copy | Move, &Effect);
  }
  int Count(const std::string& line) const {
    return static_cast<int>(std::count(Log.begin(), Log.end(), line));
  }
};

TEST(HeadlessDrag, EntersPassesOverAndDrops) {
  TDragFixture f;
  f.Screen->SetAutoRun(false);
  f.Screen->MouseMove({10, 10});
  f.Screen->MouseDown();
  for (const int x : {20, 110, 120, 210, 150}) f.Screen->MouseMove({x, 50});
  f.Screen->MouseUp();
  f.Screen.Drain();
  EXPECT_EQ(f.Log,
            (TLog{"feedback 0", "middle enter 1 110,50", "feedback 2", "middle over 1 120,50",
                  "feedback 2", "middle leave", "right enter 1 210,50", "feedback 0", "right leave",
                  "middle enter 1 150,50", "feedback 2", "middle over 0 150,50", "feedback 2",
                  "middle drop 0 150,50"}));
  EXPECT_EQ(f.Result, DRAGDROP_S_DROP);
  EXPECT_EQ(f.Effect, Move);
  EXPECT_FALSE(f.Left.GetMouseCapture());
  // The mouse is the controls' again.
  TLog lines;
  f.Left.OnLine = [&](const std::string& line) { lines.push_back(line); };
  f.Screen->Click({5, 5});
  f.Screen.Drain();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "click"), 1);
}

TEST(HeadlessDrag, ATargetsWindowMayEndInItsCalls) {
  for (const char* call : {"enter", "over", "leave", "drop"}) {
    SCOPED_TRACE(call);
    TDragFixture f;
    f.MiddleTarget->OnCall = [&](const std::string& what) {
      if (what == call) f.Middle.reset();
    };
    f.Screen->Drag({10, 10}, {250, 50}, {}, mbLeft, 24);
    f.Drags = 0;
    if (f.Middle) f.Screen->Drag({10, 10}, {150, 50}, {}, mbLeft, 24);
    EXPECT_EQ(f.Middle, nullptr);
    EXPECT_EQ(f.Result, DRAGDROP_S_DROP);
    f.MiddleTarget->OnCall = nullptr;
  }
}

TEST(HeadlessDrag, ADragThatNobodyEndsIsCancelledAsAFault) {
  TDragFixture f;
  f.Screen->MouseMove({10, 10});
  f.Screen->MouseDown();
  f.Screen->MouseMove({120, 50});
  EXPECT_EQ(f.Result, DRAGDROP_S_CANCEL);
  EXPECT_EQ(f.Screen->GetComplaints(),
            std::vector<TString>{u"The drag waits for input that nobody gives."});
  f.Screen->ClearComplaints();
  f.Screen->MouseUp();
}

}  // namespace
}  // namespace oak::tests
