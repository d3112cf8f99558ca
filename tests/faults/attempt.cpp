#include "faults/attempt.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace test {

std::string Attempt(const std::function<std::string()>& attempt, unsigned seconds) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        alarm(seconds);
        std::string word = attempt();
        if (word.empty()) word = "\n";
        const ssize_t written = write(ends[1], word.data(), word.size());
        _exit(written == static_cast<ssize_t>(word.size()) ? 0 : 1);
    }
    close(ends[1]);
    std::string word;
    std::array<char, 256> piece{};
    for (ssize_t count = 0; (count = read(ends[0], piece.data(), piece.size())) > 0;)
        word.append(piece.data(), static_cast<std::size_t>(count));
    close(ends[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return "no process";
    if (WIFSIGNALED(status))
        return WTERMSIG(status) == SIGALRM ? "took too long"
                                           : "ended by signal " + std::to_string(WTERMSIG(status));
    return word == "\n" ? std::string() : word;
}

Endings ForEachFault(std::size_t most, const std::function<std::string(std::size_t)>& attempt) {
#if defined(ODFMODEL_ADDRESS_SANITIZER)
    most /= 4;
#endif
    Endings endings;
    for (std::size_t number = 1;; number += IsLongRun() || number < most ? 1 : number / 16) {
        const std::string word = Attempt([&] { return attempt(number); });
        if (word.empty()) return endings;
        ++endings[word];
    }
}

} // namespace test
