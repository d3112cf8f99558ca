// Counts the words of many documents at once, as a service would: each document on one thread, no lock.
// service FILE...
#include <odfmodel/odfmodel.h>

#include <atomic>
#include <iostream>
#include <sstream>
#include <thread>

/// What a service answers for one file that it knows nothing about.
std::string Answer(const char* file, const std::atomic<bool>& isEnding) {
    ODF::OpenOptions options;
    options.limits.totalBytes = 256U << 20; // a service decides how much one file may ask for
    options.progress = [&](const ODF::Progress&) { return !isEnding; };
    ODF::Document document;
    if (const ODF::Result opened = document.Open(file, options); !opened) return opened.Text();
    if (!document.Body()) return "no text";
    std::istringstream text(ODF::Text(*document.Body()));
    std::size_t words = 0;
    for (std::string word; text >> word;)
        ++words;
    return std::to_string(words) + " words";
}

int main(int argc, char** argv) {
    std::vector<std::string> answers(static_cast<std::size_t>(argc));
    std::atomic<int> next = 1;
    std::atomic<bool> isEnding = false; // set by whoever ends the service: what is being read then ends, too
    {
        std::vector<std::jthread> workers;
        for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
            workers.emplace_back([&] {
                for (int file = next++; file < argc; file = next++)
                    answers[static_cast<std::size_t>(file)] = Answer(argv[file], isEnding);
            });
    }
    for (int file = 1; file < argc; ++file)
        std::cout << argv[file] << ": " << answers[static_cast<std::size_t>(file)] << '\n';
}
