// The hub with controls that the test plays.
#include "oak/coordination/ShellLink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "oak/coordination/OakSelectionList.h"
#include "oak/namespace/OakItemIdList.h"
#include "tests/framework/TempFolder.h"

namespace oak {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tests::TTempFolder;
using TLog = std::vector<std::string>;

std::string NameOf(const Ref<IItemIdList>& item) {
  return item ? ToUtf8(ExtractFileName(item->Path())) : "nil";
}

/// Writes down what it hears, behind its name.
class TFakeControl : public TObject, public IOakShellControl {
 public:
  TFakeControl(std::string name, TLog& log) : Name(std::move(name)), Log(log) {}
  ~TFakeControl() { setShellLink(nullptr); }

  std::string Name;
  TLog& Log;
  bool TakesGoUp = false;
  std::function<void()> OnHeard;  ///< In the middle of a call, which may end the control.

  void setShellLink(TOakShellLink* pLink) override {
    if (fLink == pLink) return;
    if (fLink) {
      fLink->UnregisterShellControl(this);
      Log.push_back(Name + " detached");
    }
    fLink = pLink;
    if (fLink) fLink->RegisterShellControl(this);
  }
  TOakShellLink* getShellLink() override { return fLink; }
  void PathChanged(const Ref<IItemIdList>& pItemIdList) override {
    Heard("path " + NameOf(pItemIdList));
  }
  void FileChanged(const Ref<IItemIdList>& FolderPIDL, const Ref<IItemIdList>& FilePIDL) override {
    Heard("file " + NameOf(FolderPIDL) + " " + (FilePIDL ? "yes" : "nil"));
  }
  void SelectAll() override { Heard("all"); }
  void Refresh(TRefreshLevel pRefreshLevel, const Ref<IItemIdList>& pItemIdList) override {
    Heard("refresh " + std::to_string(pRefreshLevel) + " " + NameOf(pItemIdList));
  }
  bool GoUp() override {
    const bool taken = TakesGoUp;
    Heard("up");
    return taken;
  }

 private:
  void Heard(const std::string& what) {
    Log.push_back(Name + " " + what);
    if (const auto handler = OnHeard) handler();
  }
  TOakShellLink* fLink = nullptr;
};

class TFilteredControl : public TFakeControl, public IOakSupportsFilter {
 public:
  using TFakeControl::TFakeControl;
  void SetFilter(TStringView pFilter) override {
    Log.push_back(Name + " filter " + ToUtf8(pFilter));
  }
};

class ShellLink : public ::testing::Test {
 protected:
  ShellLink() {
    for (const char* name : {"a", "b", "c"}) std::filesystem::create_directory(folder.Native(name));
    folder.Write("file", "x");
    for (TFakeControl* control : {tree.get(), list.get(), bar.get()})
      control->setShellLink(link.get());
    link->OnChange = [this](TObject* sender, const Ref<IItemIdList>& item) {
      EXPECT_EQ(sender, link.get());
      log.push_back("changed " + NameOf(item) + (link->GetEnabled() ? "" : " (disabled)"));
    };
    link->OnSelectionChanged = [this](TObject*, const Ref<IItemIdList>& item) {
      log.push_back("selected " + NameOf(item) + (link->GetEnabled() ? "" : " (disabled)"));
    };
  }

  Ref<IItemIdList> Place(const char* name) { return TOakItemIdList::Create(folder.Path(name)); }
  TLog Take() { return std::exchange(log, {}); }
  void Go(const char* name) { link->PathChanged(nullptr, Place(name)); }

  TTempFolder folder;
  TLog log;
  std::unique_ptr<TOakShellLink> link = std::make_unique<TOakShellLink>();
  std::unique_ptr<TFakeControl> tree = std::make_unique<TFakeControl>("tree", log);
  std::unique_ptr<TFakeControl> list = std::make_unique<TFilteredControl>("list", log);
  std::unique_ptr<TFakeControl> bar = std::make_unique<TFakeControl>("bar", log);
};

// --- folders -------------------------------------------------------------------

TEST_F(ShellLink, ANavigationReachesTheOthersInTheirOrder) {
  link->PathChanged(list.get(), Place("a"));
  EXPECT_THAT(Take(), ElementsAre("tree path a", "bar path a", "changed a"));
  EXPECT_EQ(NameOf(link->GetCurrentFolderItemIdList()), "a");
  link->PathChanged(list.get(), Place("a"));
  EXPECT_THAT(Take(), ElementsAre("changed a")) << "the controls are there already";
  EXPECT_EQ(link->GetCount(), 1);
  link->RegisterShellControl(tree.get());
  link->RegisterShellControl(nullptr);
  link->PathChanged(nullptr, Place("b"));
  EXPECT_THAT(Take(), ElementsAre("tree path b", "list path b", "bar path b", "changed b"))
      << "once each, without a sender all";
  link->PathChanged(tree.get(), nullptr);
  EXPECT_THAT(Take(), ElementsAre("list path nil", "bar path nil", "changed nil"));
  EXPECT_EQ(NameOf(link->GetCurrentFolderItemIdList()), "b") << "the history knows no such place";
}

TEST_F(ShellLink, WhatAControlReportsInTurnStopsAtTheHub) {
  tree->OnHeard = [&] {
    link->PathChanged(tree.get(), Place("b"));
    link->FileChanged(tree.get(), Place("b"), Place("file")->GetLastPart());
    link->SelectAll();
    link->Refresh(rfFull);
    link->GoUp();
  };
  link->PathChanged(list.get(), Place("a"));
  EXPECT_THAT(Take(), ElementsAre("tree path a", "bar path a", "changed a"));
  link->FileChanged(list.get(), Place("a"), Place("file")->GetLastPart());
  EXPECT_THAT(Take(), ElementsAre("tree file a yes", "bar file a yes", "selected file (disabled)"));
  EXPECT_TRUE(link->GetEnabled());
  tree->OnHeard = [] { throw std::runtime_error("no"); };
  EXPECT_THROW(Go("c"), std::runtime_error);
  EXPECT_FALSE(link->GetEnabled()) << "until somebody enables it again";
}

TEST_F(ShellLink, AHandlerOfOnChangeMayNavigateOn) {
  link->OnChange = [&](TObject*, const Ref<IItemIdList>& item) {
    log.push_back("changed " + NameOf(item));
    if (NameOf(item) == "a") link->PathChanged(nullptr, Place("b"));
  };
  link->PathChanged(tree.get(), Place("a"));
  EXPECT_THAT(Take(), ElementsAre("list path a", "bar path a", "changed a", "tree path b",
                                  "list path b", "bar path b", "changed b"));
}

TEST_F(ShellLink, DisabledItPassesOnNothingButFilters) {
  link->SetEnabled(false);
  link->PathChanged(nullptr, Place("a"));
  link->FileChanged(nullptr, Place("a"), Place("file")->GetLastPart());
  link->SelectAll();
  link->Refresh(rfSmart);
  link->GoUp();
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(link->GetCount(), 0);
  link->FilterChanged(tree.get(), u"*.txt");
  EXPECT_THAT(Take(), ElementsAre("list filter *.txt")) << "only who can filter";
  EXPECT_FALSE(link->GetEnabled());
  link->SetEnabled(true);
  link->FilterChanged(list.get(), u"*.md");
  EXPECT_THAT(Take(), IsEmpty()) << "not to the sender";
  EXPECT_TRUE(link->GetEnabled());
}

// --- veto ------------------------------------------------------------------------

TEST_F(ShellLink, AVetoLeavesEverythingAndIsAskedOnce) {
  Go("a");
  Take();
  link->OnNavigating = [&](TObject* sender, const Ref<IItemIdList>& item, bool& cancel) {
    EXPECT_TRUE(link->GetEnabled()) << "before the guard";
    log.push_back((sender == list.get() ? "list asks " : "asks ") + NameOf(item));
    cancel = NameOf(item) == "b";
  };
  link->PathChanged(list.get(), Place("b"));
  EXPECT_THAT(Take(), ElementsAre("list asks b"));
  link->PathChanged(tree.get(), Place("b"));
  EXPECT_THAT(Take(), IsEmpty()) << "the answer is remembered";
  EXPECT_EQ(NameOf(link->GetCurrentFolderItemIdList()), "a");
  link->PathChanged(bar.get(), Place("c"));
  EXPECT_THAT(Take(), ElementsAre("asks c", "tree path c", "list path c", "changed c"));
  link->PathChanged(list.get(), Place("b"));
  EXPECT_THAT(Take(), ElementsAre("list asks b")) << "one answer is remembered, no more";
  link->FileChanged(list.get(), Place("b"), Place("file")->GetLastPart());
  EXPECT_THAT(Take(), ElementsAre("tree file b yes", "bar file b yes", "selected file (disabled)"))
      << "files are not asked for";
}

// --- files -----------------------------------------------------------------------

TEST_F(ShellLink, AFileIsToldOnceAndAlsoItsEnd) {
  const Ref<IItemIdList> place = TOakItemIdList::Create(ExtractFileDir(folder.Path("file")));
  const Ref<IItemIdList> file = Place("file")->GetLastPart();
  link->FileChanged(tree.get(), nullptr, file);
  EXPECT_THAT(Take(), IsEmpty()) << "none before, none now";
  for (int i = 0; i < 2; ++i) link->FileChanged(tree.get(), place, file);
  ASSERT_EQ(log.size(), 3u) << "the second time nothing happens";
  EXPECT_EQ(log.back(), "selected file (disabled)");
  EXPECT_EQ(link->GetCurrentFileItemIdList()->Path(), folder.Path("file"));
  Take();
  link->FileChanged(tree.get(), place, nullptr);
  ASSERT_EQ(log.size(), 3u);
  EXPECT_EQ(log.back(), "selected nil (disabled)");
  EXPECT_FALSE(link->GetCurrentFileItemIdList());
  EXPECT_TRUE(link->GetEnabled());
}

// --- other broadcasts ----------------------------------------------------------------

TEST_F(ShellLink, RefreshesAndSelectionsGoAroundWithoutAGuard) {
  tree->OnHeard = [&] {
    tree->OnHeard = nullptr;
    link->Refresh(tree.get(), rfCheckboxes, nullptr);
  };
  link->Refresh(bar.get(), rfSmart, Place("a"));
  EXPECT_THAT(Take(), ElementsAre("tree refresh 1 a", "list refresh 2 nil", "bar refresh 2 nil",
                                  "list refresh 1 a"));
  link->SelectAll(list.get());
  EXPECT_THAT(Take(), ElementsAre("tree all", "bar all"));
}

TEST_F(ShellLink, TheFirstThatCanGoesUp) {
  list->TakesGoUp = true;
  link->GoUp(bar.get());
  EXPECT_THAT(Take(), ElementsAre("tree up", "list up"));
  link->GoUp(list.get());
  EXPECT_THAT(Take(), ElementsAre("tree up", "bar up", "list up")) << "the sender at last";
}

// --- history ---------------------------------------------------------------------

TEST_F(ShellLink, MovesTakeTheControlsAlong) {
  for (const char* name : {"a", "b", "c"}) Go(name);
  Take();
  const Ref<IOakShellHistory> history = link->GetHistory();
  history->MoveBack(2);
  EXPECT_THAT(Take(), ElementsAre("tree path a", "list path a", "bar path a", "changed a"));
  EXPECT_EQ(link->GetPosition(), 0);
  EXPECT_EQ(link->GetCount(), 3) << "a move adds nothing";
  link->MoveBack(1);
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_FALSE(link->IsMovePossible(-1));
  link->MoveForward(1);
  EXPECT_THAT(Take(), ElementsAre("tree path b", "list path b", "bar path b", "changed b"));
  link->SetPosition(-1);
  EXPECT_EQ(link->GetPosition(), 1) << "ignored";
  link->SetPosition(7);
  EXPECT_FALSE(link->GetCurrentFolderItemIdList());
  link->SetPosition(1);
  link->Clear();
  EXPECT_EQ(link->GetCount(), 1) << "never empty once it had an entry";
  EXPECT_EQ(NameOf(history->GetCurrentFolderItemIDList()), "b");
}

TEST_F(ShellLink, DuringAMoveNothingIsAdded) {
  for (const char* name : {"a", "b"}) Go(name);
  tree->OnHeard = [&] { link->Add(Place("c")); };
  link->MoveBack(1);
  EXPECT_EQ(link->GetCount(), 2);
  EXPECT_EQ(link->GetPosition(), 0);
  link->Add(Place("c"));
  EXPECT_EQ(link->GetPosition(), 1) << "afterwards it is";
}

TEST_F(ShellLink, AForbiddenMoveHasMovedTheHistory) {
  for (const char* name : {"a", "b"}) Go(name);
  Take();
  link->OnNavigating = [](TObject*, const Ref<IItemIdList>&, bool& cancel) { cancel = true; };
  link->MoveBack(1);
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(link->GetPosition(), 0);
  link->OnNavigating = nullptr;
  link->SetEnabled(false);
  link->MoveForward(1);
  EXPECT_THAT(Take(), IsEmpty());
  EXPECT_EQ(link->GetPosition(), 1);
}

// --- coming and going --------------------------------------------------------------

TEST_F(ShellLink, ControlsMayComeAndGoInTheMiddle) {
  auto late = std::make_unique<TFakeControl>("late", log);
  tree->OnHeard = [&] {
    list.reset();
    late->setShellLink(link.get());
  };
  Go("a");
  EXPECT_THAT(Take(), ElementsAre("tree path a", "list detached", "bar path a", "changed a"));
  tree->OnHeard = [&] { tree.reset(); };
  Go("b");
  EXPECT_THAT(Take(), ElementsAre("tree path b", "tree detached", "bar path b", "late path b",
                                  "changed b"));
  bar->OnHeard = [&] { late.reset(); };
  link->GoUp(late.get());
  EXPECT_THAT(Take(), ElementsAre("bar up", "late detached")) << "the sender has gone";
}

TEST_F(ShellLink, TheHubMayEndInTheMiddleOfAnything) {
  const std::vector<std::function<void()>> calls = {
      [&] { link->PathChanged(nullptr, Place("c")); },
      [&] { link->FileChanged(nullptr, Place("c"), Place("file")->GetLastPart()); },
      [&] { link->SelectAll(); },
      [&] { link->Refresh(rfFull); },
      [&] { link->GoUp(bar.get()); },
      [&] { link->MoveBack(1); },
  };
  for (const auto& call : calls) {
    for (const char* name : {"a", "b"}) Go(name);
    Take();
    tree->OnHeard = [&] { link.reset(); };
    call();
    ASSERT_EQ(log.size(), 4u) << "the first one heard it, then all were detached";
    EXPECT_THAT(TLog(log.begin() + 1, log.end()),
                ElementsAre("bar detached", "list detached", "tree detached"));
    tree->OnHeard = nullptr;
    link = std::make_unique<TOakShellLink>();
    for (TFakeControl* control : {tree.get(), list.get(), bar.get()})
      control->setShellLink(link.get());
  }
  for (auto* event : {&link->OnChange, &link->OnSelectionChanged})
    *event = [&](TObject*, const Ref<IItemIdList>&) { link.reset(); };
  link->FileChanged(tree.get(), Place("c"), Place("file")->GetLastPart());
  EXPECT_FALSE(link);

  link = std::make_unique<TOakShellLink>();
  link->OnNavigating = [&](TObject*, const Ref<IItemIdList>&, bool&) { link.reset(); };
  tree->setShellLink(link.get());
  Take();
  Go("a");
  EXPECT_THAT(Take(), ElementsAre("tree detached"));
}

/// Never unregisters: the hub must not wait for it.
class TStubbornControl : public TFakeControl {
 public:
  using TFakeControl::TFakeControl;
  void setShellLink(TOakShellLink* pLink) override {
    if (pLink) pLink->RegisterShellControl(this);
    if (!pLink) throw std::runtime_error("no");
  }
};

TEST_F(ShellLink, TheEndComesEvenIfAControlResists) {
  TLog ignored;
  auto* stubborn = new TStubbornControl("stubborn", ignored);
  stubborn->setShellLink(link.get());
  const Ref<IOakShellHistory> history = link->GetHistory();
  Go("a");
  Take();
  link.reset();
  EXPECT_THAT(Take(), ElementsAre("bar detached", "list detached", "tree detached"));
  EXPECT_EQ(history->GetCount(), 0) << "who holds the history holds an empty one";
  history->MoveBack(1);
  history->Add(Place("a"));
  EXPECT_EQ(history->GetPosition(), -1);
  delete stubborn;
}

TEST_F(ShellLink, OwnsItsSelectionListAndIsToldOfItsEnd) {
  link->SetSelectionList(std::make_unique<TOakSelectionList>());
  delete link->GetSelectionList();
  EXPECT_FALSE(link->GetSelectionList());
  link->SetSelectionList(std::make_unique<TOakSelectionList>());
}

}  // namespace
}  // namespace oak
