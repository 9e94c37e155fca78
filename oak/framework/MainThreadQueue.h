// Work for the main thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>

#include "oak/framework/Sync.h"

namespace oak {

class TThread;

/// Calls the main thread when there is something to do for it, inside whatever loop it
/// runs. On Windows InitializeFramework installs one with a window, so that every
/// message loop serves the queue. Lives as long as the process: a thread may be inside
/// of it after it has been replaced.
class IMainThreadWaker {
 public:
  /// The queue has become due: CheckSynchronize is to be called, soon, on the main
  /// thread. Once for each batch, on the thread that posted, which may be the main one.
  /// False if that failed: the next closure tries again.
  virtual bool Wake() noexcept = 0;
  /// CheckSynchronize begins: what Wake has set can be reset. Main thread.
  virtual void Woken() noexcept = 0;
  /// The main thread waits for Poke, at most so many milliseconds, and lets through
  /// what it must answer meanwhile (sent messages). May return early. False if this
  /// waker has no way of its own to wait.
  virtual bool Wait(DWORD milliseconds) noexcept = 0;
  /// Ends Wait. Any thread.
  virtual void Poke() noexcept = 0;

 protected:
  ~IMainThreadWaker() = default;
};

/// The closures that wait for the main thread, in the order in which they were
/// posted. Any thread posts; the main thread runs them in CheckSynchronize, which its
/// message loop calls through the waker, or the program itself.
class TMainThreadQueue {
 public:
  using TClosure = std::function<void()>;

  /// The process's queue; never destroyed.
  static TMainThreadQueue& Instance();

  /// Appends a closure. `thread` and `token` only mark it for Remove. False when the
  /// queue is closed; the closure is destroyed then. One that has run is destroyed on
  /// the main thread, one that is dropped by whoever drops it, never under a lock.
  bool Post(TClosure closure, const TThread* thread = nullptr, const void* token = nullptr);
  /// Appends a closure and waits until it has run; what it throws is raised here. False
  /// when the queue is closed before that. On the main thread it runs at once.
  bool Send(const TClosure& closure);
  /// Drops what Post appended with this thread and this token; nil matches all, but
  /// with both nil nothing is dropped. Closures that a thread waits for stay.
  void Remove(const TThread* thread, const void* token = nullptr);

  /// Runs what was posted before the call, also when called within a closure: the
  /// order holds. What closures post meanwhile waits for the next call. With a
  /// time-out in milliseconds it first waits for something to come. True if something
  /// was run. What a posted closure throws goes to Application().HandleException, and
  /// the next one runs. Main thread, else EThread.
  bool CheckSynchronize(DWORD timeout = 0);
  /// Closures that wait.
  std::size_t GetPending() const;

  /// Ends a wait of the main thread in CheckSynchronize or TThread::WaitFor. Any thread.
  void Poke() noexcept;
  /// Waits for Poke or a closure. May return early. Main thread.
  void Wait(DWORD milliseconds) noexcept;

  /// Who wakes the main thread's loop; nil for nobody. Main thread.
  void SetWaker(IMainThreadWaker* waker) noexcept { fWaker = waker; }
  IMainThreadWaker* GetWaker() const noexcept { return fWaker; }
  /// No wake until the next CheckSynchronize: who calls this sees to that one himself.
  void HoldWakes() noexcept { fWakePending = true; }
  /// For a program with its own loop: called as IMainThreadWaker::Wake is, after it. To
  /// be set before other threads post.
  std::function<void()> OnWake;

  /// Drops all closures and releases the threads that wait in Send. What is posted is
  /// dropped until Open. Main thread.
  void Close();
  void Open();

 private:
  struct TSent;
  struct TEntry {
    std::uint64_t Number = 0;
    TClosure Closure;
    const TThread* Thread = nullptr;
    const void* Token = nullptr;
    std::shared_ptr<TSent> Sent;
  };
  TMainThreadQueue() = default;
  bool Append(TEntry entry);
  bool RunNext(std::uint64_t last);
  void WakeLoop() noexcept;

  mutable std::mutex fLock;
  std::deque<TEntry> fEntries;
  std::uint64_t fLastNumber = 0;
  bool fClosed = false;
  std::atomic<bool> fWakePending{false};
  std::atomic<IMainThreadWaker*> fWaker{nullptr};
  std::atomic<bool> fMainWaits{false};
  TEvent fChanged;
};

/// Gives the main thread what it needs to be called from other threads inside any
/// message loop: on Windows a message-only window. Main thread; more calls do nothing. A
/// program need not call it: the first TThread that the main thread creates, or the
/// first closure that it posts, does it too. On Linux a program with its own loop sets
/// TMainThreadQueue::OnWake or watches MainThreadWaitHandle.
void InitializeFramework();
/// The counterpart, explicit, at the end of the program or before the library is
/// unloaded; FinalizeShell does it, no static destructor does. With a time in
/// milliseconds it waits at most so long for the library's threads to end, and serves
/// the queue meanwhile; then it closes the queue and destroys the window. True if no
/// thread is left. The next use begins anew. Main thread.
bool FinalizeFramework(DWORD milliseconds = 0);

/// Something that the main loop can watch besides its own sources: on Linux a file
/// descriptor that is readable when CheckSynchronize is to be called, which resets it.
/// -1 where windows do that (Windows) or the system has none left. Made by the first
/// call. Main thread.
int MainThreadWaitHandle();

namespace detail {
/// As InitializeFramework if the caller is the main thread.
void EnsureFramework() noexcept;
/// The system's part.
void InstallMainThreadWaker();
void RemoveMainThreadWaker() noexcept;
}  // namespace detail

}  // namespace oak
