// Reports of failed internal checks. The checks are in every build. A failure is reported, and the
// function that checked continues with the fallback in its own contract.
#ifndef OSAL_EXPORT_OSAL_ASSERT_H
#define OSAL_EXPORT_OSAL_ASSERT_H

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Writes one line to standard error that names the failed check, then returns.
//
//   expression  text of the expression that was false
//   file        source path as it is to be printed
//   line        line number of the check
//   function    name of the enclosing function
//   format      printf-style message with its arguments; "" for none
//
// The line is cut at 1023 bytes, its newline included. It is written with one system call unless a
// signal or a full pipe interrupts it; text that standard error does not accept is lost. Line
// breaks in the message become spaces. Any thread may call it at any time. It allocates nothing,
// takes no lock and keeps the calling thread's last-error value. It does not end the process; a
// write to a pipe without a reader may, unless the process ignores SIGPIPE.
void assertReport(const char* expression, const char* file, int line, const char* function,
                  const char* format, ...);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

// True when the expression is true; otherwise reports it with the given source path and is false.
// The path is an argument because __FILE__ depends on the folder of the build.
#define OSAL_CHECK(expression, path) \
    ((expression) ? 1 : (assertReport(#expression, path, __LINE__, __func__, ""), 0))

#endif
