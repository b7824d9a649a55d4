// stopwatch OUTPUT PROGRAM [ARGUMENT...]: runs PROGRAM with its standard output and its messages in OUTPUT,
// and prints its wall clock in microseconds, its peak memory in kilobytes and its exit status. So small
// itself that neither is its own.
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int count, char** arguments) {
    if (count < 3)
        return 2;
    const auto start = std::chrono::steady_clock::now();
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
    const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("%.0f %ld %d\n", elapsed.count(), usage.ru_maxrss,
                WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}
