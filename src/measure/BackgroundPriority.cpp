#include "measure/BackgroundPriority.h"

#include <QtGlobal>

#if defined(Q_OS_WIN)
#include <qt_windows.h>
#elif defined(Q_OS_LINUX)
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace kx {

void lowerThisThreadsPriority() {
#if defined(Q_OS_WIN)
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
#elif defined(Q_OS_LINUX)
    // Linux keeps a nice value per thread: this one yields to the window's.
    constexpr int Nice = 5;
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), Nice);
#endif
}

} // namespace kx
