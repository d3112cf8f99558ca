#include "password.h"

#include "console.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <fstream>
#include <iostream>
#include <termios.h>
#include <unistd.h>

namespace command {
namespace {

constexpr int kMaxQuestions = 3;

/// Switches the echo of the terminal off for its life. Signals of the keyboard wait until it is on again.
class NoEcho {
public:
    NoEcho() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGQUIT, SIGTSTP, SIGTERM, SIGHUP})
            sigaddset(&signals, signal);
        sigprocmask(SIG_BLOCK, &signals, &signalsBefore_);
        if (tcgetattr(STDIN_FILENO, &before_) != 0) return;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        isOff_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;
    ~NoEcho() {
        if (isOff_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        sigprocmask(SIG_SETMASK, &signalsBefore_, nullptr);
    }
    bool isOff() const { return isOff_; }

private:
    termios before_{};
    sigset_t signalsBefore_{};
    bool isOff_ = false;
};

} // namespace

std::optional<std::string> AskPassword(const std::string& question) {
    if (isatty(STDIN_FILENO) == 0) return std::nullopt;
    std::string password;
    {
        const NoEcho noEcho;
        if (!noEcho.isOff()) return std::nullopt; // rather no password than one in plain sight
        std::cerr << question << ": " << std::flush;
        if (!std::getline(std::cin, password)) password.clear();
    }
    std::cerr << '\n';
    return password.empty() ? std::nullopt : std::optional(password);
}

namespace {

bool IsAboutPassword(ODF::Status status) {
    return status == ODF::Status::PasswordNeeded || status == ODF::Status::WrongPassword;
}

} // namespace

void Passwords::addOptions(CLI::App& app) {
    app_ = &app;
    auto* const text = app.add_option("--password", text_,
                                      "Password of encrypted packages (other users of the "
                                      "machine may see it in the list of processes)");
    auto* const file = app.add_option("--password-file", file_,
                                      "File whose first line is the password of encrypted packages");
    text->type_name("TEXT");
    file->type_name("FILE")->excludes(text);
}

std::optional<std::string> ReadPasswordFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string text;
    if (!in || !std::getline(in, text)) {
        Complain(path, "no password can be read from this file");
        return std::nullopt;
    }
    if (text.ends_with('\r')) text.pop_back();
    return text;
}

bool Passwords::prepare() {
    isGiven_ = app_->count("--password") > 0;
    if (file_.empty()) return true;
    std::optional<std::string> text = ReadPasswordFile(file_);
    if (!text) return false;
    text_ = std::move(*text);
    isGiven_ = true;
    return true;
}

ODF::Status Passwords::open(const std::string& file, const Attempt& attempt) const {
    ODF::Status status = attempt(isGiven_ ? &text_ : nullptr);
    if (isGiven_) return status;
    for (int i = 0; i < kMaxQuestions && IsAboutPassword(status); ++i) {
        const std::optional<std::string> password = AskPassword("Password for " + Quoted(file));
        if (!password) break;
        status = attempt(&*password);
    }
    return status;
}

} // namespace command
