#include "oak/framework/Thread.h"

#include <cassert>
#include <chrono>

#include "oak/base/TypeName.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

thread_local TThread* tCurrent = nullptr;

/// The number of running threads; the last thing that a thread of ours touches.
TParking& Running() {
  static auto& running = *new TParking;
  return running;
}

void TellClock() noexcept {
  if (const TWaitClockUse clock; clock) clock->Changed();
}

void CountIn() noexcept { Running().Word().fetch_add(1); }

void CountOut() noexcept {
  Running().Word().fetch_sub(1);
  TellClock();
  Running().Wake(1);
}

int SystemPriority(TThreadPriority priority) {
  constexpr int values[] = {THREAD_PRIORITY_IDLE,         THREAD_PRIORITY_LOWEST,
                            THREAD_PRIORITY_BELOW_NORMAL, THREAD_PRIORITY_NORMAL,
                            THREAD_PRIORITY_ABOVE_NORMAL, THREAD_PRIORITY_HIGHEST,
                            THREAD_PRIORITY_TIME_CRITICAL};
  return values[priority];
}

EThread SystemFailure(TStringView what) {
  return EThread(TString(what) + ErrorText(detail::GetLastErrorDirect()));
}

}  // namespace

/// What thread and object share, so that either may be gone before the other.
struct TThread::TLife {
  enum class TPhase : std::uint8_t {
    Suspended,  ///< Created; the thread looks at the phase when it is let go.
    Started,    ///< The thread works on the object.
    Abandoned   ///< The object was destroyed before the start; the thread leaves.
  };
  explicit TLife(TThread* thread) : Thread(thread) {}
  bool Leave(TPhase next) noexcept {
    TPhase expected = TPhase::Suspended;
    return Phase.compare_exchange_strong(expected, next);
  }
  TThread* const Thread;
  std::atomic<TPhase> Phase{TPhase::Suspended};
  std::atomic<bool> CountedOut{false};
  TEvent Finished{true};
};

// --- beginning -------------------------------------------------------------------

TThread::TThread() : fLife(std::make_shared<TLife>(this)) {
  detail::EnsureFramework();
  auto holder = std::make_unique<std::shared_ptr<TLife>>(fLife);
  fHandle = Api().CreateThread(nullptr, 0, &TThread::Run, holder.get(), CREATE_SUSPENDED, nullptr);
  if (!fHandle) throw SystemFailure(u"The thread can't be created: ");
  static_cast<void>(holder.release());  // the thread's now
}

bool TThread::StartIfSuspended() {
  if (!fLife->Leave(TLife::TPhase::Started)) return false;
  // From here on the thread may end and take the object with it.
  const std::shared_ptr<TLife> life = fLife;
  CountIn();
  constexpr DWORD failure = 0xFFFFFFFFu;
  if (Api().ResumeThread(fHandle) != failure) return true;
  EThread error = SystemFailure(u"The thread can't be started: ");
  life->Phase = TLife::TPhase::Suspended;
  CountOut();
  throw error;
}

void TThread::Start() {
  if (!StartIfSuspended()) throw EThread(u"A thread can be started only once.");
}

bool TThread::GetSuspended() const noexcept {
  return fLife->Phase.load() == TLife::TPhase::Suspended;
}

// --- on the thread ---------------------------------------------------------------

DWORD STDAPICALLTYPE TThread::Run(LPVOID parameter) {
  std::shared_ptr<TLife> life;
  {
    const std::unique_ptr<std::shared_ptr<TLife>> holder(
        static_cast<std::shared_ptr<TLife>*>(parameter));
    life = std::move(*holder);
  }
  const int result = RunBody(*life);
  const bool counted = !life->CountedOut.exchange(true);
  life.reset();
  if (counted) CountOut();
  return static_cast<DWORD>(result);
}

int TThread::RunBody(TLife& life) noexcept {
  if (life.Phase.load() == TLife::TPhase::Abandoned) return 0;
  TThread& thread = *life.Thread;
  tCurrent = &thread;
  thread.Work();
  const int result = thread.fReturnValue;
  if (thread.fFreeOnTerminate) delete &thread;
  tCurrent = nullptr;
  life.Finished.SetEvent();  // the object belongs to others now
  TMainThreadQueue::Instance().Poke();
  return result;
}

void TThread::Work() noexcept {
  try {
    if (!GetTerminated()) Execute();
  } catch (...) {
    fFatalException = std::current_exception();
  }
  try {
    DoTerminate();
  } catch (...) {
    if (!fFatalException) fFatalException = std::current_exception();
  }
}

void TThread::DoTerminate() {
  if (OnTerminate) TMainThreadQueue::Instance().Send([this] { OnTerminate(*this); });
}

// --- end ---------------------------------------------------------------------------

void TThread::Terminate() {
  fTerminated.store(true, std::memory_order_release);
  TerminatedSet();
}

bool TThread::GetFinished() const noexcept { return fLife->Finished.IsSet(); }

int TThread::WaitFor() {
  StartIfSuspended();
  WaitFor(INFINITE);
  return fReturnValue;
}

bool TThread::WaitFor(DWORD milliseconds) {
  if (tCurrent == this) throw EThread(u"A thread can't wait for its own end.");
  TEvent& finished = fLife->Finished;
  if (!IsMainThread()) return finished.WaitFor(milliseconds) == wrSignaled;
  TMainThreadQueue& queue = TMainThreadQueue::Instance();
  const ULONGLONG start = Api().GetTickCount64();
  for (;;) {
    queue.CheckSynchronize();
    if (finished.IsSet()) return true;
    DWORD left = INFINITE;
    if (milliseconds != INFINITE) {
      const ULONGLONG passed = Api().GetTickCount64() - start;
      if (passed >= milliseconds) return false;
      left = milliseconds - static_cast<DWORD>(passed);
    }
    queue.Wait(left);
  }
}

bool TThread::ForceTerminate() noexcept {
  if (!Api().TerminateThread || tCurrent == this) return false;
  if (!Api().TerminateThread(fHandle, 0)) return false;
  // Asynchronous: until then the thread may still run.
  Api().WaitForSingleObject(fHandle, INFINITE);
  const bool neverStarted = fLife->Leave(TLife::TPhase::Abandoned);
  if (!neverStarted && !fLife->CountedOut.exchange(true)) CountOut();
  fLife->Finished.SetEvent();
  TMainThreadQueue::Instance().Poke();
  return true;
}

void TThread::Finish() noexcept {
  if (tCurrent == this) return;
  if (fLife->Leave(TLife::TPhase::Abandoned)) {
    CountIn();
    Api().ResumeThread.Function()(fHandle);  // the bare function: this must not fail on trial
    fLife->Finished.SetEvent();
    return;
  }
  if (fLife->Finished.IsSet()) return;
  try {
    Terminate();
    WaitFor(INFINITE);
  } catch (...) {
    fLife->Finished.WaitFor();
  }
}

TThread::~TThread() {
  assert((tCurrent == this || GetSuspended() || GetFinished()) &&
         "the destructor of a thread's class calls Finish");
  Finish();
  RemoveQueuedEvents(this);
  // Bare as well: an observer must not see what may come at any late time.
  Api().CloseHandle.Function()(fHandle);
}

// --- settings ------------------------------------------------------------------------

void TThread::SetPriority(TThreadPriority value) noexcept {
  fPriority = value;
  Api().SetThreadPriority(fHandle, SystemPriority(value));
}

DWORD TThread::GetThreadID() const noexcept { return Api().GetThreadId(fHandle); }

TString TThread::ClassName() const { return TypeNameOf(*this); }

TThread* TThread::Current() noexcept { return tCurrent; }

void TThread::NameThreadForDebugging(TStringView name) noexcept {
  if (!Api().SetThreadDescription) return;
  try {
    Api().SetThreadDescription(Api().GetCurrentThread(), W(TString(name)));
  } catch (...) {
    // A thread without name works as well.
  }
}

int TThread::GetRunningCount() noexcept { return static_cast<int>(Running().Word().load()); }

bool TThread::AwaitNone(DWORD milliseconds) {
  using TSteady = std::chrono::steady_clock;
  const auto end = TSteady::now() + std::chrono::milliseconds(milliseconds);
  constexpr DWORD slice = 2;
  for (;;) {
    if (IsMainThread()) CheckSynchronize();
    const std::uint32_t running = Running().Word().load();
    if (running == 0) return true;
    if (TSteady::now() >= end) return false;
    Running().Park(running, slice);
  }
}

namespace {

class TAnonymousThread final : public TThread {
 public:
  explicit TAnonymousThread(TClosure closure) : fClosure(std::move(closure)) {
    SetFreeOnTerminate(true);
  }
  ~TAnonymousThread() override { Finish(); }

 protected:
  void Execute() override { fClosure(); }

 private:
  const TClosure fClosure;
};

}  // namespace

TThread* TThread::CreateAnonymousThread(TClosure closure) {
  return new TAnonymousThread(std::move(closure));
}

// --- the main thread -------------------------------------------------------------------

void TThread::Queue(const TThread* thread, TClosure closure, const void* token) {
  if (IsMainThread())
    closure();
  else
    ForceQueue(thread, std::move(closure), token);
}

void TThread::ForceQueue(const TThread* thread, TClosure closure, const void* token) {
  TMainThreadQueue::Instance().Post(std::move(closure), thread, token);
}

void TThread::Synchronize(const TThread*, const TClosure& closure) {
  if (!TMainThreadQueue::Instance().Send(closure))
    throw EThread(u"The main thread takes no calls any more.");
}

bool TThread::CheckSynchronize(DWORD timeout) {
  return TMainThreadQueue::Instance().CheckSynchronize(timeout);
}

void TThread::RemoveQueuedEvents(const TThread* thread, const void* token) {
  TMainThreadQueue::Instance().Remove(thread, token);
}

}  // namespace oak
