// Reports of failed internal checks. The checks stay in every build; a failure is reported and
// the caller goes on with the fallback that its own contract states.
#ifndef OSAL_EXPORT_OSAL_ASSERT_H
#define OSAL_EXPORT_OSAL_ASSERT_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Writes one line to standard error that names the failed check, then returns.
//
//   expression  text of the expression that was false
//   file        source path, as the caller wants it shown
//   line        line number of the check
//   function    name of the enclosing function
//   format      printf-style message with its arguments; "" for none
//
// The line is cut at 1023 bytes, its newline included, and written with as few system calls as the
// kernel allows (one, unless a signal or a full pipe comes between); what standard error does not
// take is lost. Line breaks in the message become spaces. Any thread may call it at any time; it
// allocates nothing, takes no lock and keeps the calling thread's last-error value. It does not end
// the process; writing to a pipe without a reader may, unless the process ignores SIGPIPE.
void assertReport(const char* expression, const char* file, int line, const char* function,
                  const char* format, ...);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

// True when the expression holds; otherwise reports it under the given source path and is false.
// The path is an argument because __FILE__ depends on where the build runs.
#define OSAL_CHECK(expression, path) \
    ((expression) ? 1 : (assertReport(#expression, path, __LINE__, __func__, ""), 0))

#endif
