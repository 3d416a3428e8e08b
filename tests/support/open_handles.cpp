// Kept apart from the other helpers and their headers: the Windows headers clash with the
// library's own. Declared in test_util.h.
#ifdef _WIN32
#include <windows.h>
#else
#include <dirent.h>
#endif

namespace vemtest {

int OpenHandles() {
#ifdef _WIN32
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return static_cast<int>(handles);
#else
    int count = 0;
    if (DIR* d = opendir("/proc/self/fd")) {
        while (readdir(d)) ++count;
        closedir(d);
    }
    return count;
#endif
}

}  // namespace vemtest
