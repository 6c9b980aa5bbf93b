#include "files.h"

#include "definite.h"
#include "der.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <openssl/crypto.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {
namespace {

// The library's lengths are signed numbers of 32 bits.
constexpr std::size_t LongestFile = 0x7FFFFFFF;
constexpr std::string_view BeginMark = "-----BEGIN ";
constexpr std::string_view EndMark = "-----END ";
constexpr std::string_view Dashes = "-----";

[[noreturn]] void failed(const std::string &what) {
    throw Failure{Exit::Unreadable, what + ": " + std::strerror(errno)};
}

// An open file, which is closed with the variable.
struct Descriptor {
    int number;

    explicit Descriptor(int opened) : number(opened) {}
    ~Descriptor() {
        if (number > STDERR_FILENO)
            close(number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
};

void writeAll(int file, karil::Bytes octets, const std::string &name) {
    while (!octets.empty()) {
        const ssize_t written = write(file, octets.data(), octets.size());
        if (written < 0 && errno != EINTR)
            failed(name + " cannot be written");
        if (written > 0)
            octets = octets.subspan(static_cast<std::size_t>(written));
    }
}

// A file that is removed unless it was moved to its place.
struct NewFile {
    std::string path;

    ~NewFile() {
        if (!path.empty())
            unlink(path.c_str());
    }
};

// Takes the next line, without its end.
std::string_view takeLine(std::string_view &text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
        line.remove_suffix(1);
    return line;
}

bool isBase64(char character) {
    const bool isLetter = (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
    return isLetter || (character >= '0' && character <= '9') || character == '+' || character == '/';
}

// The octets of base64 text. The library's decoder takes any character, so that others are refused here.
karil::Octets fromBase64(const std::string &base64, const std::string &where) {
    const std::size_t padding = base64.ends_with("==") ? 2 : base64.ends_with("=") ? 1 : 0;
    const bool isClean = std::all_of(base64.begin(), base64.end() - static_cast<std::ptrdiff_t>(padding), isBase64);
    karil::Octets octets(base64.size() / 4 * 3 + 4);
    std::uint32_t length = 0;
    if (!isClean || base64_decode(base64.c_str(), octets.data(), &length) != 0)
        throw Failure{Exit::Unreadable, where + " is no PEM: its text is no base64"};
    octets.resize(length);
    return octets;
}

// Takes the body of a PEM block up to its END line.
karil::Octets takeBody(std::string_view &text, const std::string &label, const std::string &where) {
    std::string base64;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.starts_with(EndMark)) {
            if (line != std::string(EndMark).append(label).append(Dashes))
                throw Failure{Exit::Unreadable, where + " is no PEM: it begins and ends with different labels"};
            return fromBase64(base64, where);
        }
        if (line.find(':') != std::string_view::npos)
            throw Failure{Exit::Unreadable, where + " is PEM with header lines, such as an encrypted key has: " +
                                                "such a file is not read"};
        std::copy_if(line.begin(), line.end(), std::back_inserter(base64), [](char c) { return c != ' '; });
    }
    throw Failure{Exit::Unreadable, where + " is no whole PEM: its END line is missing"};
}

// An opening of indefinite length: the library reads definite lengths alone.
bool isIndefinite(karil::Bytes octets) {
    return octets.size() > 1 && octets[0] == 0x30 && octets[1] == 0x80;
}

karil::Octets definite(karil::Octets octets, const std::string &where) {
    if (!isIndefinite(octets))
        return octets;
    std::optional<karil::Octets> result = definiteForm(octets);
    if (!result)
        throw Failure{Exit::Unreadable, inWords(KAPKCS7_IndefiniteFormatErr, where)};
    return std::move(*result);
}

} // namespace

std::string nameOf(const std::string &path) {
    return path == "-" ? "standard input" : path;
}

karil::Octets readFile(const std::string &path) {
    const std::string what = nameOf(path) + " cannot be read";
    const Descriptor file(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat facts {};
    if (file.number < 0 || fstat(file.number, &facts) != 0)
        failed(what);
    karil::Octets octets;
    // One octet more, so that the end of a regular file is seen without another buffer.
    std::size_t room = S_ISREG(facts.st_mode) && facts.st_size > 0 ? static_cast<std::size_t>(facts.st_size) + 1 : 4096;
    for (std::size_t length = 0;;) {
        if (length > LongestFile || room > LongestFile + 4096)
            throw Failure{Exit::Unreadable, what + ": it has more than 2 GB"};
        octets.resize(room);
        const ssize_t got = read(file.number, octets.data() + length, room - length);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            failed(what);
        length += static_cast<std::size_t>(got);
        if (got == 0) {
            octets.resize(length);
            return octets;
        }
        if (length == room)
            room = std::min(room * 2, LongestFile + 2);
    }
}

std::vector<Document> documentsOf(karil::Octets octets, const std::string &file) {
    std::string_view text(reinterpret_cast<const char *>(octets.data()), octets.size());
    std::vector<Document> found;
    // Text may begin with the same octet as DER does, the digit 0, and a message may hold PEM as its content.
    const Element first = elementOf(octets);
    const bool isDer = isIndefinite(octets) || (first.tag == TagSequence && first.whole.size() == octets.size());
    while (!isDer && !text.empty()) {
        const std::string_view line = takeLine(text);
        if (!line.starts_with(BeginMark) || !line.ends_with(Dashes) || line.size() < BeginMark.size() + Dashes.size())
            continue;
        std::string where = found.empty() ? file : file + ", block " + std::to_string(found.size() + 1);
        const std::string label(line.substr(BeginMark.size(), line.size() - BeginMark.size() - Dashes.size()));
        karil::Octets body = takeBody(text, label, where);
        found.push_back({definite(std::move(body), where), label, where});
    }
    if (found.size() > 1)
        found[0].file += ", block 1";
    if (found.empty())
        found.push_back({definite(std::move(octets), file), "", file});
    return found;
}

std::vector<Document> readDocuments(const std::string &path) {
    return documentsOf(readFile(path), nameOf(path));
}

Document readDocument(const std::string &path) {
    std::vector<Document> found = readDocuments(path);
    if (found.size() > 1)
        throw Failure{Exit::Misuse,
                      nameOf(path) + " has " + std::to_string(found.size()) + " PEM blocks, and one is wanted here"};
    return std::move(found[0]);
}

std::string pemText(karil::Bytes der, std::string_view label) {
    constexpr std::size_t lineLength = 64;
    std::string base64(der.size() / 3 * 4 + 8, '\0');
    if (base64_encode(der.data(), static_cast<std::uint32_t>(der.size()),
                      reinterpret_cast<std::uint8_t *>(base64.data())) != 0)
        throw Failure{Exit::Unreadable, "the octets cannot be written as PEM"};
    const std::size_t length = std::strlen(base64.c_str());
    std::string pem;
    // Room for all of it from the start: a key would leave a copy behind in a text that grows.
    pem.reserve(length + length / lineLength + 2 * (label.size() + BeginMark.size() + Dashes.size()) + 4);
    pem.append(BeginMark).append(label).append(Dashes).append("\n");
    for (std::size_t i = 0; i < length; i += lineLength)
        pem.append(base64, i, std::min(lineLength, length - i)).append("\n");
    OPENSSL_cleanse(base64.data(), base64.size());
    return pem.append(EndMark).append(label).append(Dashes).append("\n");
}

void writeFile(const std::string &path, karil::Bytes octets, Mode mode, Existing existing) {
    if (path.empty() || path == "-") {
        writeAll(STDOUT_FILENO, octets, "standard output");
        return;
    }
    struct stat facts {};
    const bool isThere = stat(path.c_str(), &facts) == 0;
    const std::string refusal = path + " is there already, and is not written over";
    if (isThere && existing == Existing::Refuse)
        throw Failure{Exit::Misuse, refusal};
    // A device or a pipe is written to as it is.
    if (isThere && !S_ISREG(facts.st_mode)) {
        const Descriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        if (file.number < 0)
            failed(path + " cannot be written");
        writeAll(file.number, octets, path);
        return;
    }
    NewFile made{path + ".XXXXXX"};
    // mkostemp makes a file of mode 0600.
    const Descriptor file(mkostemp(made.path.data(), O_CLOEXEC));
    if (file.number < 0) {
        made.path.clear();
        failed(path + " cannot be written");
    }
    writeAll(file.number, octets, path);
    if (mode == Mode::Public) {
        const mode_t mask = umask(0);
        umask(mask);
        if (fchmod(file.number, 0666 & ~mask) != 0)
            failed(path + " cannot be written");
    }
    if (fsync(file.number) != 0)
        failed(path + " cannot be written");
    if (existing == Existing::Refuse) {
        // Another program may have made the file by now: a link does not take its place, where a rename would.
        if (link(made.path.c_str(), path.c_str()) != 0)
            errno == EEXIST ? throw Failure{Exit::Misuse, refusal} : failed(path + " cannot be written");
        return;
    }
    if (rename(made.path.c_str(), path.c_str()) != 0)
        failed(path + " cannot be written");
    made.path.clear();
}

} // namespace tool
