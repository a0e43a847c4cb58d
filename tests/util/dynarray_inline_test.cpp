// The array's tests with the bodies compiled into the program.
#include "util/export/dynarray.inl"

#define DYNARRAY_SUITE InlineDynArray
#include "dynarray_test.cpp"  // NOLINT(bugprone-suspicious-include)
