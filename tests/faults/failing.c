/* A library to preload, under which one call fails. FAULT in the environment is "CALL NUMBER WHAT", or "CALL
   NUMBER+ WHAT" for that call and all behind it. CALL is one of the names below, or "any" for each but
   malloc. WHAT is the number of an error; "short", for a write of half; "kill N", a signal ahead of the call;
   "cut PATH" or "swap PATH", which ahead of it halves a file, or puts PATH.new in its place. FAULT_COUNTS
   names a file that takes at the end how often each call was made. Calls on the descriptors of the
   diagnostics are not counted: fwrite is what writes there. */

#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

enum Call {
    MALLOC,
    OPEN,
    STAT,
    FSTAT,
    MMAP,
    MUNMAP,
    READ,
    WRITE,
    LSEEK,
    CLOSE,
    FCNTL,
    FTRUNCATE,
    UNLINK,
    FWRITE,
    ANY,
    CALLS
};

static const char* const names[] = {"malloc", "open",      "stat",   "fstat",  "mmap",
                                    "munmap", "read",      "write",  "lseek",  "close",
                                    "fcntl",  "ftruncate", "unlink", "fwrite", "any"};
static long counts[CALLS], number;
static enum Call fault = CALLS;
static int error, is_short, signal_number, goes_on;
static const char *cut, *swap;
static char swapped_in[200];

__attribute__((constructor)) static void Read_Fault(void) {
    char name[20], what[200] = "";
    int behind = 0;
    const char* const text = getenv("FAULT");
    alarm(60); /* no run hangs */
    memset(counts, 0, sizeof counts);
    if (!text || sscanf(text, "%19s %ld%n", name, &number, &behind) != 2)
        return;
    goes_on = text[behind] == '+';
    static char path[200];
    sscanf(text + behind + goes_on, "%199s %199s", what, path);
    is_short = !strcmp(what, "short");
    signal_number = !strcmp(what, "kill") ? atoi(path) : 0;
    cut = !strcmp(what, "cut") ? path : NULL;
    swap = !strcmp(what, "swap") ? path : NULL;
    snprintf(swapped_in, sizeof swapped_in, "%.190s.new", path);
    error = atoi(what);
    for (fault = MALLOC; fault < CALLS && strcmp(names[fault], name); ++fault) {
    }
}

__attribute__((destructor)) static void Write_Counts(void) {
    const char* const path = getenv("FAULT_COUNTS");
    const int file = path ? syscall(SYS_open, path, O_WRONLY | O_CREAT | O_TRUNC, 0600) : -1;
    char line[60];
    for (int call = 0; file >= 0 && call < CALLS; ++call) {
        const int length = snprintf(line, sizeof line, "%s %ld\n", names[call], counts[call]);
        syscall(SYS_write, file, line, length);
    }
}

static int Is_Struck(enum Call call) {
    const long count = ++counts[call];
    return fault == call && (count == number || (goes_on && count > number));
}

static void Halve(const char* path) {
    struct stat status;
    if (syscall(SYS_stat, path, &status) == 0)
        truncate(path, status.st_size / 2);
}

/* Whether this call fails, with errno set. What happens ahead of it, happens here. */
static int Strikes(enum Call call) {
    if (!Is_Struck(call) & !(call != MALLOC && Is_Struck(ANY)))
        return 0;
    if (signal_number)
        raise(signal_number);
    if (cut)
        Halve(cut);
    if (swap)
        rename(swapped_in, swap);
    errno = error;
    return error != 0;
}

extern void *__libc_malloc(size_t), *__libc_calloc(size_t, size_t), *__libc_realloc(void*, size_t),
    *__libc_memalign(size_t, size_t);

void* malloc(size_t size) {
    return Strikes(MALLOC) ? NULL : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    return Strikes(MALLOC) ? NULL : __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) {
    return Strikes(MALLOC) ? NULL : __libc_realloc(block, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    return Strikes(MALLOC) ? NULL : __libc_memalign(alignment, size);
}
int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return Strikes(OPEN) ? -1 : syscall(SYS_open, path, flags, mode);
}

int stat(const char* path, struct stat* status) {
    return Strikes(STAT) ? -1 : syscall(SYS_stat, path, status);
}

int fstat(int file, struct stat* status) {
    return Strikes(FSTAT) ? -1 : syscall(SYS_fstat, file, status);
}

void* mmap(void* address, size_t length, int protection, int flags, int file, off_t offset) {
    return Strikes(MMAP) ? MAP_FAILED
                         : (void*)syscall(SYS_mmap, address, length, protection, flags, file, offset);
}

int munmap(void* address, size_t length) {
    return Strikes(MUNMAP) ? -1 : syscall(SYS_munmap, address, length);
}

ssize_t read(int file, void* bytes, size_t length) {
    return Strikes(READ) ? -1 : syscall(SYS_read, file, bytes, length);
}

ssize_t write(int file, const void* bytes, size_t length) {
    if (file > STDERR_FILENO && Strikes(WRITE))
        return -1;
    const int is_half = is_short && number == counts[WRITE];
    return syscall(SYS_write, file, bytes, is_half ? (length + 1) / 2 : length);
}

off_t lseek(int file, off_t offset, int from) {
    return Strikes(LSEEK) ? -1 : syscall(SYS_lseek, file, offset, from);
}

/* The descriptor is gone, whatever the answer is. */
int close(int file) {
    const int is_failed = Strikes(CLOSE), saved = errno;
    const int result = syscall(SYS_close, file);
    if (is_failed)
        errno = saved;
    return is_failed ? -1 : result;
}

int fcntl(int file, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return Strikes(FCNTL) ? -1 : syscall(SYS_fcntl, file, command, argument);
}

int ftruncate(int file, off_t length) {
    return Strikes(FTRUNCATE) ? -1 : syscall(SYS_ftruncate, file, length);
}

int unlink(const char* path) {
    return Strikes(UNLINK) ? -1 : syscall(SYS_unlink, path);
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* file) {
    return Strikes(FWRITE) ? 0 : fwrite_unlocked(bytes, size, count, file);
}
