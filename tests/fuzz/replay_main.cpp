// Replays fuzz inputs without the fuzzing engine: every file of the
// directories given on the command line is fed to the target once, so that
// the normal build and `make test` keep the corpus and the found faults as
// regression inputs. A broken invariant aborts, which fails the test.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        // A directory that holds no inputs yet may be missing from a checkout.
        if (!fs::is_directory(argv[i])) continue;
        std::vector<fs::path> files;
        for (const auto& e : fs::directory_iterator(argv[i]))
            if (e.is_regular_file() && e.path().filename().string()[0] != '.')
                files.push_back(e.path());
        std::sort(files.begin(), files.end());
        for (const auto& f : files) {
            std::ifstream s(f, std::ios::binary);
            const std::vector<char> bytes((std::istreambuf_iterator<char>(s)),
                                          std::istreambuf_iterator<char>());
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++replayed;
        }
    }
    std::printf("%d inputs replayed\n", replayed);
    return 0;
}
