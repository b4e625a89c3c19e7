// IAnimWorkers: threads that a host lends to the library.
#pragma once

#include <unknwn.h>

#include "base/Guid.h"

// One piece of a job. `context` is what Run was given; `index` counts from 0. Throws nothing.
using AnimTask = void(STDMETHODCALLTYPE*)(void* context, int index);

// A host that has threads to spare implements this and lends it with FxboxSetWorkers
// (component/Fxbox4.h). Pulls then share out their rows; the bytes are the same for every number of
// threads. platform/WorkerPool.h is one that is ready to use.
struct IAnimWorkers : IUnknown {
  static constexpr IID kIid = base::Guid("{DA5BD3D6-6A58-4B7E-9A93-A5D2225CDB90}");

  // Calls `task(context, i)` once for each i from 0 to count - 1, in any order and on any threads,
  // the calling one among them, and returns when all calls have returned. `count` is 1 to 64; a
  // piece takes between a tenth of a millisecond and some tens of them. Several threads may call at
  // once, with jobs of their own, but none does from within a task. A job that fails, or leaves
  // tasks out, is finished on the calling thread. Throws nothing.
  virtual HRESULT STDMETHODCALLTYPE Run(int count, AnimTask task, void* context) = 0;

 protected:
  ~IAnimWorkers() = default;
};
