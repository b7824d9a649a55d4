#ifndef NETWORK_DESCRIPTOR_WAIT_H
#define NETWORK_DESCRIPTOR_WAIT_H

enum class Descriptor_Wait {
    READY,     // for the event, or for the failure that the next operation will meet
    TIMED_OUT, // at once where the seconds are negative
    FAILED,    // for the reason in errno
    NOT_READY  // something else happened to the descriptor
};

// Waits until a descriptor is ready for POLLIN or POLLOUT, through signals; 0 seconds wait for ever.
Descriptor_Wait Wait_For(int descriptor, short event, int seconds);

#endif
