// Errors of libjpeg as exceptions.
#pragma once

#include <cstdio>  // jpeglib.h needs it before

#include <jpeglib.h>

#include <csetjmp>

#include "imageio/Decoder.h"

namespace imageio {

// The library leaves a failed call by longjmp: each call runs within Try, in whose frame nothing
// needs a destructor, and nothing thrown ever passes the library. Warnings are silent.
struct JpegErrors : jpeg_error_mgr {
  std::jmp_buf jump;
  char message[JMSG_LENGTH_MAX] = {};

  // What goes into the library's `err`.
  jpeg_error_mgr* Connect() {
    jpeg_std_error(this);
    error_exit = [](j_common_ptr jpeg) {
      char text[JMSG_LENGTH_MAX];
      (*jpeg->err->format_message)(jpeg, text);
      Leave(jpeg, text);
    };
    emit_message = [](j_common_ptr, int) {};
    output_message = [](j_common_ptr) {};
    return this;
  }

  // Ends the running call with this message.
  [[noreturn]] static void Leave(j_common_ptr jpeg, const char* text) {
    auto* self = static_cast<JpegErrors*>(jpeg->err);
    std::snprintf(self->message, sizeof self->message, "%s", text);
    std::longjmp(self->jump, 1);
  }

  template <typename Call>
  void Try(Call call) {
    if (setjmp(jump) == 0) {
      call();
      return;
    }
    throw ImageError(LibraryMessage(message));
  }
};

}  // namespace imageio
