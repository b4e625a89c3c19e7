// The guarded sections of the picture box: what a stream throws ends in the log.
#pragma once

#include <new>

#include "settings/TraceLogStd.h"
#include "storage/KvErrors.h"

namespace picbox {

// Runs `body`; after an exception the result is empty. `known` has one %s for the message,
// `unknown` none.
template <class Body>
auto Guarded(TraceLog& log, const char* known, const char* unknown, Body body) {
  using Result = decltype(body());
  const auto tell = [&](const char* message) { log.Format(1, known, message); };
  try {
    return body();
  } catch (const KvStreamException& error) {
    tell(error.Message());
  } catch (const KvFileException& error) {
    tell(error.Message());
  } catch (CKvError* error) {
    tell(error->Text());
    delete error;
  } catch (CStorageFileError* error) {
    tell(error->Text());
    delete error;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    log.Write(1, unknown, true);
  }
  return Result();
}

}  // namespace picbox
