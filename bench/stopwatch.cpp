// stopwatch OUTPUT PROGRAM [ARGUMENT...]: runs PROGRAM with its standard output and its messages in OUTPUT,
// and prints its processor time in microseconds, user and system, which other programs on the machine disturb
// less than the wall clock, its peak memory in kilobytes and its exit status. So small itself that none of
// this is its own.
#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int count, char** arguments) {
    if (count < 3)
        return 2;
    const pid_t child = vfork();
    if (child == 0) {
        const int output = open(arguments[1], O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (output >= 0 && dup2(output, 1) == 1 && dup2(output, 2) == 2)
            execvp(arguments[2], arguments + 2);
        _exit(127);
    }
    int status;
    rusage usage;
    if (child < 0 || wait4(child, &status, 0, &usage) != child)
        return 1;
    const long long microseconds = 1'000'000LL * (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                                   usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
    std::printf("%lld %ld %d\n", microseconds, usage.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}
