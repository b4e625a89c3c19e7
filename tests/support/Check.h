/* What test programs in plain C share: a check that goes on, and is counted, when it fails. */
#ifndef FXBOX_TESTS_SUPPORT_CHECK_H
#define FXBOX_TESTS_SUPPORT_CHECK_H

#include <stdio.h>

static int failures = 0;

#define CHECK(condition)                                                     \
  do {                                                                       \
    if (!(condition)) {                                                      \
      fprintf(stderr, "%s:%d: wrong: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                            \
    }                                                                        \
  } while (0)

#endif
