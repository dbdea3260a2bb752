// Runs one command and reports its wall, user and system time, its peak
// resident memory and its exit status on the last line of standard error:
//
//     run_measured [--cpu N] PROGRAM [ARGS...]
//     measured wall 0.512 user 0.401 sys 0.104 s peak 8448 kB status 0
//
// The peak a process reports carries over the resident size of whatever it
// was forked from, so a command started straight from an interpreter shows
// the interpreter's own size as its floor. Forked from this small program,
// the figure is the command's own. --cpu N keeps the command on that core.
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    int first = 1;
    int cpu = -1;
    if (argc > 2 && std::strcmp(argv[1], "--cpu") == 0) {
        cpu = std::atoi(argv[2]);
        first = 3;
    }
    if (first >= argc) {
        std::fprintf(stderr, "usage: run_measured [--cpu N] PROGRAM [ARGS...]\n");
        return 2;
    }
    const auto t0 = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid < 0) {
        std::perror("fork");
        return 2;
    }
    if (pid == 0) {
        if (cpu >= 0) {
            cpu_set_t set;
            CPU_ZERO(&set);
            CPU_SET(static_cast<unsigned>(cpu), &set);
            if (sched_setaffinity(0, sizeof set, &set) != 0) std::perror("sched_setaffinity");
        }
        execv(argv[first], argv + first);
        std::perror("execv");
        _exit(127);
    }
    int status = 0;
    struct rusage usage {};
    if (wait4(pid, &status, 0, &usage) < 0) {
        std::perror("wait4");
        return 2;
    }
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    std::fprintf(stderr, "measured wall %.6f user %.6f sys %.6f s peak %ld kB status %d\n", wall,
                 seconds(usage.ru_utime), seconds(usage.ru_stime), usage.ru_maxrss, code);
    return 0;
}
