// render: an array through a chain, while the interpreter goes on.
#include <pybind11/stl.h>

#include <array>
#include <atomic>
#include <chrono>
#include <future>

#include "component/Fxbox4.h"
#include "host/ChainCheck.h"
#include "host/Render.h"
#include "host/Texts.h"
#include "platform/WorkerPool.h"
#include "python/Arrays.h"
#include "python/Errors.h"
#include "python/Parts.h"

namespace py = pybind11;

namespace python {
namespace {

// How long a signal or a progress call waits at most.
constexpr std::chrono::milliseconds kPatience(20);

struct RenderOptions {
  std::optional<double> zoom;
  std::optional<std::pair<int, int>> fullSize;
  std::optional<std::array<int, 4>> part;
  std::optional<int> channels;
  bool lenient = false;
  std::int64_t mostPixels = host::kMostPixels;
};

void CheckOptions(const RenderOptions& options) {
  if (options.zoom && !(*options.zoom > 0)) throw py::value_error("zoom is above 0");
  if (options.fullSize && (options.fullSize->first < 1 || options.fullSize->second < 1)) {
    throw py::value_error("full_size is (width, height), both 1 or more");
  }
  if (options.part && ((*options.part)[2] < 1 || (*options.part)[3] < 1)) {
    throw py::value_error("part is (left, top, width, height) with sides of 1 or more");
  }
  if (options.channels && *options.channels != 3 && *options.channels != 4) {
    throw py::value_error("channels is 3, 4 or None");
  }
}

host::RenderRequest RequestFor(const ArrayPixels& pixels, const RenderOptions& options) {
  host::RenderRequest request;
  const host::Size size = pixels.rows.size;
  request.picture = {size, size, options.zoom};
  if (options.fullSize)
    request.picture.target = {options.fullSize->first, options.fullSize->second};
  if (options.part) {
    const auto& [left, top, width, height] = *options.part;
    request.part = host::Rectangle{left, top, width, height};
  }
  request.mostPixels = options.mostPixels;
  request.fill = [rows = pixels.rows](const imageio::Rows& into,
                                      const imageio::Progress& progress) {
    return host::Unpack(rows, into, progress);
  };
  return request;
}

using Rendered = std::unique_ptr<host::RenderedPicture>;

// Works on a thread of its own, without the interpreter.
Rendered Work(host::RenderRequest request, const std::string& text, bool lenient) {
  const auto creator = host::MakeCreator();
  request.chain.text = host::ChainTextOf(text);
  if (!lenient) {
    request.chain.text =
        host::CheckChainText(request.chain, host::ListFilters(*creator.Get()), *creator.Get());
  }
  return host::Render(*creator.Get(), request);
}

// Asks the interpreter and its user now and then whether to go on.
class Waiting {
 public:
  Waiting(std::future<Rendered>& result, host::Stopper& toStop, const std::atomic<double>& told,
          const py::object& function)
      : work(result), stopper(toStop), share(told), progress(function) {}

  Rendered Wait() {
    try {
      while (!IsReady()) Look();
      Rendered result = work.get();
      if (result) Tell(1);
      return result;
    } catch (...) {
      // The thread reads the array: it has to end first.
      stopper.Stop();
      const py::gil_scoped_release release;
      if (work.valid()) work.wait();
      throw;
    }
  }

 private:
  bool IsReady() {
    const py::gil_scoped_release release;
    return work.wait_for(kPatience) == std::future_status::ready;
  }

  void Look() {
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    Tell(share.load());
  }

  void Tell(double now) {
    if (progress.is_none()) return;
    if (progress(now).ptr() == Py_False) throw Cancelled();
  }

  std::future<Rendered>& work;
  host::Stopper& stopper;
  const std::atomic<double>& share;
  const py::object& progress;
};

Rendered RunBeside(host::RenderRequest request, const std::string& text, bool lenient,
                   const py::object& progress) {
  host::Stopper stopper;
  std::atomic<double> share{0};
  request.stopper = &stopper;
  request.progress = [&share](double now) {
    share = now;
    return true;
  };
  auto work = std::async(std::launch::async, Work, std::move(request), text, lenient);
  return Waiting(work, stopper, share, progress).Wait();
}

// The array takes the pixels over.
ByteArray ColourArray(Rendered rendered) {
  host::RenderedPicture& picture = *rendered;
  const auto [width, height] = picture.size;
  for (int y = 0; y < height; ++y) host::SwapRedAndBlue(picture.ColourRows()[y], width);
  picture.mask = {};
  BYTE* const pixels = picture.colour.data();
  const py::capsule owner(rendered.release(),
                          [](void* held) { delete static_cast<host::RenderedPicture*>(held); });
  return ByteArray({height, width, 3}, pixels, owner);
}

ByteArray RenderArray(const py::array& picture, const std::string& text, std::optional<double> zoom,
                      std::optional<std::pair<int, int>> fullSize,
                      std::optional<std::array<int, 4>> part, std::optional<int> channels,
                      bool lenient, std::int64_t mostPixels, const py::object& progress) {
  const RenderOptions options{zoom, fullSize, part, channels, lenient, mostPixels};
  CheckOptions(options);
  const ArrayPixels pixels(picture);
  Rendered rendered = RunBeside(RequestFor(pixels, options), text, lenient, progress);
  if (!rendered) throw Cancelled();
  const int count = host::ChannelsOf(*rendered, pixels.rows.channels, options.channels.value_or(0));
  return count == 3 ? ColourArray(std::move(rendered))
                    : ArrayOf(rendered->Rows(), rendered->size, 4);
}

void SetThreads(int count) {
  if (count < 0) throw py::value_error("a number of threads is 0 or more");
  const auto pool =
      count == 1 ? platform::ComPtr<platform::WorkerPool>()
                 : platform::ComPtr<platform::WorkerPool>::Attach(new platform::WorkerPool(count));
  const py::gil_scoped_release release;
  FxboxSetWorkers(pool.Get());
}

}  // namespace

void AddRender(py::module_& module) {
  module.def("render", &RenderArray, py::arg("picture"), py::arg("text"), py::kw_only(),
             py::arg("zoom"), py::arg("full_size"), py::arg("part"), py::arg("channels"),
             py::arg("lenient"), py::arg("most_pixels"), py::arg("progress"));
  module.def("set_threads", &SetThreads, py::arg("count"),
             "How many threads one render may use: 1 at first, 0 for one a processor. The bytes "
             "are the same for every number. Not while renders run, and not ahead of a fork.");
  // The threads of a pool end with the interpreter, ahead of the library.
  py::module_::import("atexit").attr("register")(py::cpp_function([] { SetThreads(1); }));
}

}  // namespace python
