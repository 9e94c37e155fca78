// A thread of the library.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/Component.h"

namespace oak {

/// The system can't create or start a thread, or a thread is used against its rules.
class EThread : public Exception {
  using Exception::Exception;
};

/// How eagerly the system runs a thread. On Linux a process without rights can only
/// lower it, and not take that back; what is not granted is left as it is, silently.
enum TThreadPriority : std::uint8_t {
  tpIdle,
  tpLowest,
  tpLower,
  tpNormal,
  tpHigher,
  tpHighest,
  tpTimeCritical
};

/// A thread with its object. Derive, override Execute, and call Start.
///
/// The constructor creates the thread but never lets it run, since Execute belongs to a
/// class whose constructor is still to come: Start does, or StartNew, which makes and
/// starts in one go. A thread that never was started can be destroyed at once; none of
/// its virtual operations is called then.
///
/// Lifetime. With FreeOnTerminate the thread destroys its object after DoTerminate,
/// and nobody else may; others may then touch it only while something of theirs keeps
/// it from ending (a list that DoTerminate takes it out of, under a lock). Without it
/// the owner destroys it. Destroying a running thread terminates it and waits;
/// therefore a class with members of its own calls Finish first in its destructor:
/// ~TThread is too late, as the members are gone by then.
///
/// Nothing is joined when the process ends; threads that still run end with it.
class TThread : public TObject {
 public:
  using TClosure = std::function<void()>;

  /// EThread if the system can't create a thread.
  TThread();
  ~TThread() override;
  TThread(const TThread&) = delete;
  TThread& operator=(const TThread&) = delete;

  /// Lets a created thread run. EThread if it runs or ran already, or if the system
  /// refuses. Any thread.
  void Start();
  /// As Start, false if it was started before. Of several callers one wins.
  bool StartIfSuspended();
  /// Created, not yet started. Any thread.
  bool GetSuspended() const noexcept;
  /// Asks Execute to end: sets the flag, then calls TerminatedSet. A thread that is
  /// terminated before it starts skips Execute. Any thread; more calls repeat
  /// TerminatedSet.
  void Terminate();
  /// Whether Terminate was called. Any thread.
  bool GetTerminated() const noexcept { return fTerminated.load(std::memory_order_acquire); }
  /// Execute and DoTerminate are over; the thread touches the object no more unless it
  /// frees it. True as well after a forced end. Any thread.
  bool GetFinished() const noexcept;
  /// Starts the thread if nobody has, and waits for its end. Returns GetReturnValue. On
  /// the main thread it calls CheckSynchronize meanwhile, so a thread that waits in
  /// Synchronize gets on. EThread on the thread itself. Not with FreeOnTerminate.
  int WaitFor();
  /// As WaitFor for at most so many milliseconds; true if the thread is over. Does not
  /// start it.
  bool WaitFor(DWORD milliseconds);
  /// Ends the thread from outside, wherever it stands: its locks stay taken, its
  /// references are never released. Only for a thread that hangs, when the rest of the
  /// process must go on. False if the system has no such thing (Linux) or refuses: the
  /// thread then still runs, its object must stay alive, and FreeOnTerminate is the
  /// way to get rid of it some day. After True the object may be destroyed, without
  /// waiting. Any other thread.
  bool ForceTerminate() noexcept;

  /// Whether the thread destroys its object in the end. Default False. To be set
  /// before the end of DoTerminate.
  bool GetFreeOnTerminate() const noexcept { return fFreeOnTerminate; }
  void SetFreeOnTerminate(bool value) noexcept { fFreeOnTerminate = value; }
  /// Result of the thread; 0 by default. Execute sets it.
  int GetReturnValue() const noexcept { return fReturnValue; }
  void SetReturnValue(int value) noexcept { fReturnValue = value; }
  /// What left Execute or DoTerminate, nil if nothing did. To be read in OnTerminate
  /// or when GetFinished.
  const std::exception_ptr& GetFatalException() const noexcept { return fFatalException; }
  /// As last set; tpNormal at first. Any thread.
  TThreadPriority GetPriority() const noexcept { return fPriority; }
  void SetPriority(TThreadPriority value) noexcept;
  /// The system's identifier and handle. The handle belongs to the object.
  DWORD GetThreadID() const noexcept;
  HANDLE GetHandle() const noexcept { return fHandle; }
  /// Name of the object's class, for diagnostics.
  virtual TString ClassName() const;

  /// Runs on the main thread, before the thread's end, which waits for it. Not when the
  /// main-thread queue is closed.
  std::function<void(TThread& Sender)> OnTerminate;

  /// The object of the calling thread; nil on a thread that is not of this class.
  static TThread* Current() noexcept;
  /// Name of the calling thread in a debugger. Linux shows its first 15 bytes.
  static void NameThreadForDebugging(TStringView name) noexcept;
  /// Threads of this class that were created and have not ended. Any thread.
  static int GetRunningCount() noexcept;
  /// Waits until GetRunningCount is 0, at most so many milliseconds of real time, and
  /// calls CheckSynchronize on the main thread meanwhile. True if it is.
  static bool AwaitNone(DWORD milliseconds);

  /// Makes a thread and starts it. With FreeOnTerminate set in its constructor the
  /// result may be gone already.
  template <class T, class... Args>
  static T* StartNew(Args&&... args) {
    auto thread = std::make_unique<T>(std::forward<Args>(args)...);
    thread->Start();
    return thread.release();
  }
  /// A thread that runs a closure, not yet started, with FreeOnTerminate.
  static TThread* CreateAnonymousThread(TClosure closure);

  // --- the main thread ---------------------------------------------------------------
  /// The closure runs on the main thread, soon; the caller does not wait. Called on the
  /// main thread it runs at once. With a thread the closure is dropped if that object
  /// is destroyed before; token is for RemoveQueuedEvents. What it throws goes to
  /// Application().HandleException (at once: to the caller).
  static void Queue(const TThread* thread, TClosure closure, const void* token = nullptr);
  /// As Queue, never at once.
  static void ForceQueue(const TThread* thread, TClosure closure, const void* token = nullptr);
  /// The closure runs on the main thread, and the caller waits until it has; what it
  /// throws is raised here. EThread when the main-thread queue is closed.
  static void Synchronize(const TThread* thread, const TClosure& closure);
  /// Main thread: runs what is queued; see TMainThreadQueue::CheckSynchronize.
  static bool CheckSynchronize(DWORD timeout = 0);
  /// Drops queued closures of this thread and this token; nil matches all, both nil
  /// drop nothing. Synchronize is not affected.
  static void RemoveQueuedEvents(const TThread* thread, const void* token = nullptr);

 protected:
  /// The thread's work, on the thread. An exception that leaves it is kept as
  /// FatalException.
  virtual void Execute() = 0;
  /// The last thing before the thread's end, on the thread, also when Execute was
  /// skipped: fires OnTerminate through Synchronize.
  virtual void DoTerminate();
  /// Called by Terminate, on the caller's thread.
  virtual void TerminatedSet() {}
  /// Terminates the thread and waits for its end; for destructors. Nothing happens on
  /// the thread itself, if it never was started, or after a forced end.
  void Finish() noexcept;

 private:
  struct TLife;
  static DWORD STDAPICALLTYPE Run(LPVOID parameter);
  static int RunBody(TLife& life) noexcept;
  void Work() noexcept;

  std::shared_ptr<TLife> fLife;  ///< Shared with the thread, which may outlive the object.
  HANDLE fHandle = nullptr;
  std::atomic<bool> fTerminated{false};
  std::atomic<bool> fFreeOnTerminate{false};
  std::atomic<int> fReturnValue{0};
  std::atomic<TThreadPriority> fPriority{tpNormal};
  std::exception_ptr fFatalException;
};

}  // namespace oak
