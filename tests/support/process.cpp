#include "support/process.h"

#include "support/files.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>

namespace test {

Ending Run(const std::vector<std::string>& command, std::chrono::seconds time) {
    const TemporaryFolder folder;
    const std::string output = folder / "output";
    std::vector<char*> arguments;
    std::vector<std::string> texts = command;
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP); // a group of its own, to end all of it
    posix_spawnattr_setpgroup(&attributes, 0);
    pid_t child = 0;
    const bool isStarted =
        posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), environ) == 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);

    Ending ending;
    if (!isStarted) return ending;
    const auto end = std::chrono::steady_clock::now() + time;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > end) {
            ending.isTimeout = true;
            kill(-child, SIGKILL);
            waitpid(child, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    if (!ending.isTimeout && WIFEXITED(status)) ending.code = WEXITSTATUS(status);
    ending.output = ReadFile(output);
    return ending;
}

bool HasProgram(const std::string& name) {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (access((std::filesystem::path(folder) / name).c_str(), X_OK) == 0) return true;
    return false;
}

} // namespace test
