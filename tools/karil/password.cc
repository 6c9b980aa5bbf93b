#include "password.h"

#include "failure.h"
#include "files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr std::size_t LongestPassword = 1024;

volatile std::sig_atomic_t caught = 0;

void noteSignal(int signal) {
    caught = signal;
}

constexpr std::array<int, 5> Signals = {SIGINT, SIGTERM, SIGQUIT, SIGHUP, SIGTSTP};

// The user's terminal, with what is typed unseen until it is closed. A signal ends the question, and is raised again
// once the terminal is as it was.
class Terminal {
public:
    explicit Terminal(const std::string &option) : file(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {
        if (file < 0 || tcgetattr(file, &before) != 0)
            throw Failure{Exit::Misuse, "a password is needed, and there is no terminal to ask at: use " + option};
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        struct sigaction action {};
        action.sa_handler = noteSignal;
        for (std::size_t i = 0; i < Signals.size(); ++i)
            sigaction(Signals[i], &action, &actions[i]);
        tcsetattr(file, TCSAFLUSH, &silent);
    }
    ~Terminal() {
        tcsetattr(file, TCSAFLUSH, &before);
        close(file);
        for (std::size_t i = 0; i < Signals.size(); ++i)
            sigaction(Signals[i], &actions[i], nullptr);
        if (caught != 0)
            (void)raise(caught);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    Secret ask(const std::string &prompt) const {
        say(prompt);
        // Room for all of it from the start, so that no copy is left behind by a vector that grows.
        Secret typed{karil::Octets(LongestPassword)};
        std::size_t length = 0;
        std::uint8_t octet = 0;
        for (;;) {
            const ssize_t got = read(file, &octet, 1);
            if (got < 0 && errno == EINTR && caught == 0)
                continue;
            if (caught != 0)
                throw Failure{Exit::Misuse, "no password was given"};
            if (got <= 0 || octet == '\n')
                break;
            if (length == LongestPassword)
                throw Failure{Exit::Misuse, "the password is too long"};
            typed.octets()[length++] = octet;
        }
        typed.octets().resize(length);
        say("\n");
        return typed;
    }

private:
    void say(const std::string &words) const { (void)!write(file, words.data(), words.size()); }

    int file;
    termios before{};
    std::array<struct sigaction, Signals.size()> actions{};
};

} // namespace

Secret readPassword(const std::string &file, const std::string &prompt, Ask ask, const std::string &option) {
    if (!file.empty()) {
        Secret whole(readFile(file));
        karil::Octets &octets = whole.octets();
        const auto end = std::find_if(octets.begin(), octets.end(), [](auto octet) { return octet == '\n'; });
        octets.erase(end, octets.end());
        if (!octets.empty() && octets.back() == '\r')
            octets.pop_back();
        return whole;
    }
    const Terminal terminal(option);
    Secret password = terminal.ask(prompt + ": ");
    if (ask == Ask::Twice) {
        const Secret again = terminal.ask("The same again: ");
        if (!std::ranges::equal(password.bytes(), again.bytes()))
            throw Failure{Exit::Misuse, "the two passwords differ"};
    }
    return password;
}

} // namespace tool
