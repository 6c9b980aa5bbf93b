// The diagnostic file: the last basic response that was decoded, in the working directory.
#include "ka_ocsp_base.h"

#ifdef KARIL_DIAGNOSTIC_FILE
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace karil {

namespace {

constexpr char FileName[] = "ka_ocsp_basic_response.der";

void writeAll(int file, Bytes octets) {
    while (!octets.empty()) {
        const ssize_t written = write(file, octets.data(), octets.size());
        if (written > 0)
            octets = octets.subspan(static_cast<size_t>(written));
        else if (written == 0 || errno != EINTR)
            return;
    }
}

} // namespace

void writeDiagnosticFile(Bytes octets) {
    const int before = errno;
    // Nothing waits for a reader, follows a link or touches what is no regular file.
    const int file = open(FileName, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0600);
    struct stat about = {};
    if (file >= 0 && fstat(file, &about) == 0 && S_ISREG(about.st_mode) && ftruncate(file, 0) == 0)
        writeAll(file, octets);
    if (file >= 0)
        close(file);
    errno = before;
}

} // namespace karil

#else

namespace karil {

void writeDiagnosticFile(Bytes) {
}

} // namespace karil

#endif
