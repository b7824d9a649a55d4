#ifndef APP_RUN_GUARD_H
#define APP_RUN_GUARD_H

class UNIXFileManager;

// The ends of a run that it doesn't choose: a signal, a source that is shortened while it is mapped, memory
// that can't be had where no exception may pass. None of them leaves a half output.
//
// A handler is given nothing, so what it needs is state of the process; and it calls nothing but what may be
// called from a handler.
class Run_Guard {
  public:
    // Ahead of all else, by the program alone; the name is kept. Puts the null device on standard descriptors
    // that are closed, so that no file of the run gets their numbers, and sets the handlers. A signal that
    // the process was started to ignore stays ignored. SIGPIPE and SIGXFSZ are ignored too: the write that
    // fails tells of them.
    static void Begin(const char* program);

    // Whose files are looked through for the one that was shortened; null for none.
    static void Watch_Sources(UNIXFileManager* manager);

    // The output, ahead of its opening: its name, which is kept as it is.
    static void Expect_Output(const char* path);
    // The output's descriptor, of which a copy is kept. False with errno set when that fails.
    [[nodiscard]] static bool Watch_Output(int descriptor);
    // Cuts the output to length 0, by whatever names it can be reached, unless there is none or it is no
    // regular file; as long as its descriptor isn't known, it is an empty file of its name. True when its
    // name is to go too, which that of an open descriptor like /dev/stdout isn't.
    static bool Cut_Output();
    static void Forget_Output();
};

#endif
