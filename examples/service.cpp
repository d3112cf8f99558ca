// Counts the words of many documents at once, as a service would: each document on one thread, no lock.
// service FILE...
#include <odfmodel/odfmodel.h>

#include <algorithm>
#include <atomic>
#include <iostream>
#include <iterator>
#include <sstream>
#include <thread>

/// What a service answers for one file that it knows nothing about.
std::string Answer(const std::string& file, const std::atomic<bool>& isEnding) {
    ODF::OpenOptions options;
    options.limits.totalBytes = 256U << 20; // a service decides how much one file may ask for
    options.progress = [&](const ODF::Progress&) { return !isEnding; };
    ODF::Document document;
    if (const ODF::Result opened = document.Open(file, options); !opened) return opened.Text();
    if (!document.Body()) return "no text";
    std::istringstream text(ODF::Text(*document.Body()));
    return std::to_string(std::distance(std::istream_iterator<std::string>(text), {})) + " words";
}

int main(int argc, char** argv) {
    const std::vector<std::string> files(argv + 1, argv + argc);
    std::vector<std::string> answers(files.size());
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> isEnding = false; // set to end the service: documents that are being read then stop
    {
        std::vector<std::jthread> workers;
        for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
            workers.emplace_back([&] {
                for (std::size_t file = next++; file < files.size(); file = next++)
                    answers[file] = Answer(files[file], isEnding);
            });
    }
    for (std::size_t file = 0; file < files.size(); ++file)
        std::cout << files[file] << ": " << answers[file] << '\n';
}
