#ifndef FILES_OPENED_NAME_H
#define FILES_OPENED_NAME_H

#include "files/descriptor.h"

#include <string>

// What stands under a name, a link itself rather than what it leads to. All is asked of one descriptor, so
// that the answers belong together: by the next look at the name something else may stand there.
class Opened_Name {
  public:
    // Where that fails, errno tells why.
    explicit Opened_Name(const char* name)
        : descriptor(Open_Path(name, O_PATH | O_NOFOLLOW)),
          known(descriptor && fstat(descriptor.get(), &status) == 0 && (!Is_Link() || Read_Target())) {}

    explicit operator bool() const { return known; }
    bool Is_Link() const { return S_ISLNK(status.st_mode); }
    uid_t Owner() const { return status.st_uid; }
    // The text of a link.
    const char* Target() const { return target.c_str(); }
    // Makes a directory the current one.
    bool Enter() const { return fchdir(descriptor.get()) == 0; }

  private:
    bool Read_Target() {
        char text[4096];
        const ssize_t length = readlinkat(descriptor.get(), "", text, sizeof text - 1);
        (void)descriptor.Close(); // nothing enters a link
        target.assign(text, length < 0 ? 0 : static_cast<std::size_t>(length));
        return length >= 0;
    }

    Descriptor descriptor;
    struct stat status = {};
    std::string target;
    bool known;
};

#endif
