// Keeps the calling thread from being cancelled while it holds a lock.
//
// Writing, opening and closing a file are cancellation points. A thread that is cancelled there
// leaves its locks held forever, so code that may reach such a point under a lock creates an object
// of this class. A request for cancellation that comes meanwhile takes effect at the thread's next
// point.
#ifndef UTIL_C_SHARED_LOGGING_CANCELLATION_H
#define UTIL_C_SHARED_LOGGING_CANCELLATION_H

#include <pthread.h>

class CancellationOff {
  public:
    CancellationOff() {
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
    }
    ~CancellationOff() {
        pthread_setcancelstate(before, nullptr);
    }
    CancellationOff(const CancellationOff&) = delete;
    CancellationOff& operator=(const CancellationOff&) = delete;

  private:
    int before;
};

#endif
