// pelorin-cli: finds the command among the arguments (global options may come before it) and
// hands the whole command line to the program of its family next to this one, so that a command
// loads only the libraries it needs. --version without a command is answered here.
#include "cli/CliFamilies.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include <unistd.h>

namespace {

std::string folderOfThisProgram()
{
    char path[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
    if (n <= 0)
        return ".";
    const std::string_view self(path, std::size_t(n));
    return std::string(self.substr(0, self.rfind('/')));
}

}  // namespace

int main(int argc, char** argv)
{
    using namespace pelorin::cli;
    bool versionAsked = false;
    const std::string_view command = commandNameOf(argc, argv, &versionAsked);
    if (command.empty() && versionAsked) {
        std::printf("pelorin-cli %s\n", PELORIN_VERSION);
        return 0;
    }
    const bool photo = isOneOf(command, kPhotoFamilyCommands);
    const std::string program = folderOfThisProgram() + '/' + (photo ? kPhotoFamilyProgram : kAllCommandsProgram);
    ::execv(program.c_str(), argv);
    // Only reached when the program cannot be started: 127, as a shell says for a missing command.
    std::fprintf(stderr, "pelorin-cli: cannot start %s: %s\n", program.c_str(), std::strerror(errno));
    return 127;
}
