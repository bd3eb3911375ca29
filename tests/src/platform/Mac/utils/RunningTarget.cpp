// A program for the process tests: it writes its process id to "<its own path>.pid", so
// that every copy of it reports beside itself, then waits to be killed. It ends by itself
// after a minute so that a failed test leaves nothing running.
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <string>

int main()
{
    char self[PATH_MAX];
    ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return 2;
    std::string report = std::string(self, std::size_t(length)) + ".pid";
    std::string partial = report + ".part";
    // Written under another name and renamed, so that a reader never sees half of it.
    FILE* file = std::fopen(partial.c_str(), "w");
    if (file == nullptr)
        return 3;
    std::fprintf(file, "%d\n", int(::getpid()));
    if (std::fclose(file) != 0 || std::rename(partial.c_str(), report.c_str()) != 0)
        return 3;
    ::alarm(60);
    for (;;)
        ::pause();
}
