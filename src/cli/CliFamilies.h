#pragma once
// Which program of the family runs a command. pelorin-cli itself is a small launcher: the
// photo metadata commands run in pelorin-cli-photo, which loads exiv2 and QtCore only (libheif
// when a HEIF file comes); every other command, and help, in pelorin-cli-all, which loads QtGui
// and the song and camera libraries too (FFmpeg when a movie needs it). The photo commands that
// decode and paint pictures (prefs, recompress, stamp, thumbnail) run there: their own work
// outweighs the start-up of the extra libraries. Plain C++: the launcher loads nothing but the
// C++ runtime.
#include <algorithm>
#include <array>
#include <string_view>

namespace pelorin::cli {

inline constexpr std::array<std::string_view, 11> kPhotoFamilyCommands{
    "apply", "copy-date", "exif-segments", "export-plist", "gps",   "import-plist",
    "info",  "kinds",     "set-date",      "shift-dates",  "strip",
};

inline constexpr const char* kPhotoFamilyProgram = "pelorin-cli-photo";
inline constexpr const char* kAllCommandsProgram = "pelorin-cli-all";

// The command's name, as the command line reads it: the first argument that is not a global
// option (or the first after "--"). Empty when there is none; versionAsked tells whether
// --version was among the options.
inline std::string_view commandNameOf(int argc, char** argv, bool* versionAsked = nullptr)
{
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        if (optionsEnded)
            return arg;
        if (arg == "--")
            optionsEnded = true;
        else if (arg == "--output" || arg == "-o")
            ++i;  // its folder
        else if (arg == "--version" && versionAsked)
            *versionAsked = true;
        else if (!(arg.starts_with("--output=") || arg == "--json" || arg == "--dry-run" || arg == "--help"
                   || arg == "-h" || arg == "--version"))
            return arg;
    }
    return {};
}

template <std::size_t N>
bool isOneOf(std::string_view name, const std::array<std::string_view, N>& names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace pelorin::cli
