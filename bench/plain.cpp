// A program that uses SDL but not the library. Without arguments it does nothing. With "measure" it
// prints one JSON object: the processor time in ns, the least of many rounds, of functions before
// which a preloaded device is interposed, and the memory in KiB, resident and written to.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "SDL.h"
#include "bench/least.h"
#include "bench/memory.h"

namespace {

void poll() {
    SDL_Event event;
    SDL_PollEvent(&event);
}

void openDescriptor() {
    close(open("/etc/passwd", O_RDONLY));
}

void openFile() {
    if (std::FILE* file = std::fopen("/etc/passwd", "r")) {
        std::fclose(file);
    }
}

void delay() {
    SDL_Delay(0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || std::string_view(argv[1]) != "measure") {
        return EXIT_SUCCESS;
    }
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        std::fprintf(stderr, "tav_plain: %s\n", SDL_GetError());
        return EXIT_FAILURE;
    }
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
    std::printf(R"({"poll": %.2f, "open": %.1f, "fopen": %.1f, "delay": %.1f, )",
                tavbench::least(20000, poll), tavbench::least(1000, openDescriptor),
                tavbench::least(1000, openFile), tavbench::least(20, delay));
    tavbench::memory();  // the first measurement itself takes memory
    const tavbench::Memory memory = tavbench::memory();
    std::printf(R"("resident_kib": %ld, "written_kib": %ld})", memory.resident, memory.written);
    SDL_Quit();
    return EXIT_SUCCESS;
}
