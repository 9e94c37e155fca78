#include "oak/platform/Parking.h"

namespace oak {
namespace {

static_assert(sizeof(SRWLOCK) == sizeof(void*) && sizeof(CONDITION_VARIABLE) == sizeof(void*));

SRWLOCK* LockOf(void*& place) { return reinterpret_cast<SRWLOCK*>(&place); }
CONDITION_VARIABLE* ConditionOf(void*& place) {
  return reinterpret_cast<CONDITION_VARIABLE*>(&place);
}

}  // namespace

// The word is compared under the lock, and the waker passes the lock after it changed
// the word: it finds the sleeper asleep, or the sleeper finds the change.

void TParking::Park(std::uint32_t whileValue, DWORD milliseconds) noexcept {
  ::AcquireSRWLockExclusive(LockOf(fLock));
  if (fWord.load() == whileValue)
    ::SleepConditionVariableSRW(ConditionOf(fCondition), LockOf(fLock), milliseconds, 0);
  ::ReleaseSRWLockExclusive(LockOf(fLock));
}

void TParking::Wake(std::uint32_t count) noexcept {
  ::AcquireSRWLockExclusive(LockOf(fLock));
  ::ReleaseSRWLockExclusive(LockOf(fLock));
  constexpr std::uint32_t fewSleepers = 8;
  if (count > fewSleepers) {
    ::WakeAllConditionVariable(ConditionOf(fCondition));
    return;
  }
  for (; count > 0; --count) ::WakeConditionVariable(ConditionOf(fCondition));
}

}  // namespace oak
