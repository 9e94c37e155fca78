// What a worker pool tells about itself.
#include "oak/base/TypeName.h"
#include "oak/threading/ThreadPool.Worker.h"

namespace oak {
namespace {

const char16_t* StatusName(TTaskStatus pStatus) {
  switch (pStatus) {
    case TTaskStatus::Created:
      return u"Created";
    case TTaskStatus::WaitingToRun:
      return u"WaitingToRun";
    case TTaskStatus::Running:
      return u"Running";
    case TTaskStatus::Paused:
      return u"Paused";
    case TTaskStatus::Completed:
      return u"Completed";
    case TTaskStatus::Canceled:
      return u"Canceled";
  }
  return u"";
}

struct TThreadLine {
  DWORD ThreadId;
  TString ClassName;
  TTaskStatus Status;
  bool Terminated;
  Ref<IWorkItem> WorkItem;
};

TString ToText(const TThreadLine& pLine) {
  TString text =
      u"  " + pLine.ClassName + u" " + IntToStr(pLine.ThreadId) + u" " + StatusName(pLine.Status);
  if (pLine.Terminated) text += u", terminated";
  if (pLine.WorkItem)
    text += u": " + TypeName(pLine.WorkItem->ClassType()) + u", tag " +
            IntToStr(pLine.WorkItem->GetTag()) + u", " + StatusName(pLine.WorkItem->GetStatus());
  return text + u"\n";
}

}  // namespace

TString TWorkerThreadPool::Dump() const {
  std::vector<TThreadLine> lines;
  {
    const TLock lock(fLock);
    for (TOakThread* thread : fThreads) {
      const auto* const worker = dynamic_cast<TWorkerThread*>(thread);
      lines.push_back({thread->GetThreadID(), thread->ClassName(), thread->GetStatus(),
                       thread->TThread::GetTerminated(),
                       worker ? worker->GetWorkItem() : Ref<IWorkItem>()});
    }
  }
  // The items answer without the lock.
  TString text = TypeNameOf(*this) + u": " + IntToStr(static_cast<int>(lines.size())) +
                 u" threads of " + IntToStr(GetMinWorkerThreads()) + u" to " +
                 IntToStr(GetMaxRunningThreads()) + u", " + IntToStr(QueueLength()) +
                 u" items waiting\n";
  for (const TThreadLine& line : lines) text += ToText(line);
  return text;
}

}  // namespace oak
