/* A library to preload, under which one call fails. FAULT in the environment is "CALL NUMBER WHAT", or "CALL
   NUMBER+ WHAT" for that call and all behind it. CALL is one of the names below, or "any" for each but
   malloc. WHAT is the number of an error; "short", for a write of half; "kill N", a signal ahead of the call;
   "cut PATH" or "swap PATH", which ahead of it halves a file, or puts PATH.new in its place. FAULT_COUNTS
   names a file that takes at the end how often each call was made. Calls on the descriptors of the
   diagnostics are not counted: fwrite is what writes there. */

#define _GNU_SOURCE
#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#define ALL_CALLS(each)                                                                                      \
    each(malloc) each(open) each(stat) each(fstat) each(mmap) each(munmap) each(read) each(write)            \
        each(lseek) each(close) each(fcntl) each(ftruncate) each(unlink) each(openat) each(lstat)            \
        each(readlinkat) each(link) each(rename) each(renameat2) each(futimens) each(flock) each(socket)     \
        each(connect) each(getsockopt) each(poll) each(recv) each(send) each(fwrite) each(any)
#define ENUMERATOR(name) CALL_##name,
#define TEXT(name) #name,

enum Call { ALL_CALLS(ENUMERATOR) CALLS };
static const char* const names[] = {ALL_CALLS(TEXT)};
static long counts[CALLS], number;
static enum Call fault = CALLS;
static int goes_on;
static char what[200], path[200], path_new[210];

__attribute__((constructor)) static void Read_Fault(void) {
    char name[20];
    int behind = 0;
    const char* const text = getenv("FAULT");
    alarm(60); /* no run hangs */
    if (!text || sscanf(text, "%19s %ld%n", name, &number, &behind) != 2)
        return;
    goes_on = text[behind] == '+';
    sscanf(text + behind + goes_on, "%199s %199s", what, path);
    sprintf(path_new, "%s.new", path);
    for (fault = 0; fault < CALLS && strcmp(names[fault], name); ++fault) {
    }
}

__attribute__((destructor)) static void Write_Counts(void) {
    const char* const counts_path = getenv("FAULT_COUNTS");
    const int file = counts_path ? syscall(SYS_creat, counts_path, 0600) : -1;
    for (int call = 0; file >= 0 && call < CALLS; ++call)
        dprintf(file, "%s %ld\n", names[call], counts[call]);
}

static int Is_Struck(enum Call call) {
    const long count = ++counts[call];
    return fault == call && (count == number || (goes_on && count > number));
}

static void Halve_File(void) {
    struct stat status;
    if (syscall(SYS_stat, path, &status) == 0)
        truncate(path, status.st_size / 2);
}

/* Whether this call fails, with errno set. What happens ahead of it, happens here. */
static int Strikes(enum Call call) {
    if (!Is_Struck(call) & !(call != CALL_malloc && Is_Struck(CALL_any)))
        return 0;
    if (!strcmp(what, "kill"))
        raise(atoi(path));
    if (!strcmp(what, "cut"))
        Halve_File();
    if (!strcmp(what, "swap"))
        rename(path_new, path);
    errno = atoi(what);
    return errno != 0;
}

/* In place of the C library's: the answer of a failed call, and what else is done. */
#define REPLACE(call, type, name, parameters, failed, ...)                                                   \
    type name parameters {                                                                                   \
        return Strikes(CALL_##call) ? (type)failed : (type)__VA_ARGS__;                                      \
    }

extern void *__libc_malloc(size_t), *__libc_calloc(size_t, size_t), *__libc_realloc(void*, size_t),
    *__libc_memalign(size_t, size_t);

/* clang-format off */
REPLACE(malloc, void*, malloc, (size_t size), NULL, __libc_malloc(size))
REPLACE(malloc, void*, calloc, (size_t count, size_t size), NULL, __libc_calloc(count, size))
REPLACE(malloc, void*, realloc, (void* block, size_t size), NULL, __libc_realloc(block, size))
REPLACE(malloc, void*, aligned_alloc, (size_t alignment, size_t size), NULL, __libc_memalign(alignment, size))
REPLACE(open, int, open, (const char* name, int flags, int mode), -1, syscall(SYS_open, name, flags, mode))
REPLACE(stat, int, stat, (const char* name, struct stat* status), -1, syscall(SYS_stat, name, status))
REPLACE(fstat, int, fstat, (int file, struct stat* status), -1, syscall(SYS_fstat, file, status))
REPLACE(mmap, void*, mmap, (void* address, size_t length, int protection, int flags, int file, off_t offset),
        MAP_FAILED, syscall(SYS_mmap, address, length, protection, flags, file, offset))
REPLACE(munmap, int, munmap, (void* address, size_t length), -1, syscall(SYS_munmap, address, length))
REPLACE(read, ssize_t, read, (int file, void* bytes, size_t length), -1, syscall(SYS_read, file, bytes, length))
REPLACE(lseek, off_t, lseek, (int file, off_t offset, int from), -1, syscall(SYS_lseek, file, offset, from))
REPLACE(fcntl, int, fcntl, (int file, int command, void* more), -1, syscall(SYS_fcntl, file, command, more))
REPLACE(ftruncate, int, ftruncate, (int file, off_t length), -1, syscall(SYS_ftruncate, file, length))
REPLACE(unlink, int, unlink, (const char* name), -1, syscall(SYS_unlink, name))
REPLACE(openat, int, openat, (int at, const char* name, int flags, int mode), -1, syscall(SYS_openat, at, name, flags, mode))
REPLACE(lstat, int, lstat, (const char* name, struct stat* status), -1, syscall(SYS_lstat, name, status))
REPLACE(readlinkat, ssize_t, readlinkat, (int at, const char* name, char* text, size_t size), -1,
        syscall(SYS_readlinkat, at, name, text, size))
REPLACE(link, int, link, (const char* from, const char* to), -1, syscall(SYS_link, from, to))
REPLACE(rename, int, rename, (const char* from, const char* to), -1, syscall(SYS_rename, from, to))
REPLACE(renameat2, int, renameat2, (int from_at, const char* from, int to_at, const char* to, unsigned flags), -1,
        syscall(SYS_renameat2, from_at, from, to_at, to, flags))
REPLACE(futimens, int, futimens, (int file, const struct timespec* times), -1, syscall(SYS_utimensat, file, 0, times, 0))
REPLACE(flock, int, flock, (int file, int operation), -1, syscall(SYS_flock, file, operation))
REPLACE(socket, int, socket, (int domain, int type, int protocol), -1, syscall(SYS_socket, domain, type, protocol))
REPLACE(connect, int, connect, (int socket, const void* address, unsigned size), -1, syscall(SYS_connect, socket, address, size))
REPLACE(getsockopt, int, getsockopt, (int socket, int level, int option, void* value, void* size), -1,
        syscall(SYS_getsockopt, socket, level, option, value, size))
REPLACE(poll, int, poll, (void* files, unsigned long count, int wait), -1, syscall(SYS_poll, files, count, wait))
REPLACE(recv, ssize_t, recv, (int socket, void* bytes, size_t length, int flags), -1,
        syscall(SYS_recvfrom, socket, bytes, length, flags, NULL, NULL))
REPLACE(send, ssize_t, send, (int socket, const void* bytes, size_t length, int flags), -1,
        syscall(SYS_sendto, socket, bytes, length, flags, NULL, 0))
REPLACE(fwrite, size_t, fwrite, (const void* bytes, size_t size, size_t count, FILE* file), 0,
        fwrite_unlocked(bytes, size, count, file))
/* clang-format on */

ssize_t write(int file, const void* bytes, size_t length) {
    if (file > STDERR_FILENO && Strikes(CALL_write))
        return -1;
    const int is_half = !strcmp(what, "short") && number == counts[CALL_write];
    return syscall(SYS_write, file, bytes, is_half ? (length + 1) / 2 : length);
}

/* The descriptor is gone, whatever the answer is. */
int close(int file) {
    const int is_failed = Strikes(CALL_close), saved = errno;
    const int result = syscall(SYS_close, file);
    if (is_failed)
        errno = saved;
    return is_failed ? -1 : result;
}
