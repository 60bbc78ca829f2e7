#include "demo/support/TemporaryFolder.h"
#include "fuzzing/CameToSomething.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

// Fontconfig keeps what it holds behind pointers that the leak sanitizer cannot follow.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }

// Runs a target on each file of the directories that it is given.
int main(int argc, char** argv)
{
    int inputs = 0;
    bool asExpected = true;
    for (int at = 1; at < argc; ++at) {
        const std::string directory = std::string(argv[at]) + "/";
        for (const std::string& name : FilesBelow(directory)) {
            const std::string input = ContentOf(directory + name);
            cameToSomething = false;
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
            ++inputs;
            if (cameToSomething == name.starts_with("nothing-")) {
                std::fprintf(stderr, "%s came to %s\n", name.c_str(), cameToSomething ? "something" : "nothing");
                asExpected = false;
            }
        }
    }
    std::printf("%d inputs\n", inputs);
    return inputs > 0 && asExpected ? EXIT_SUCCESS : EXIT_FAILURE;
}
