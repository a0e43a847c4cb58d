// A folder of a test's own, removed with its contents.
#ifndef TESTS_SUPPORT_TEMP_FOLDER_H
#define TESTS_SUPPORT_TEMP_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class TempFolder {
  public:
    TempFolder() : path_(std::filesystem::temp_directory_path() / "kxutil_XXXXXX") {
        if (mkdtemp(path_.data()) == nullptr)
            std::abort();
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;

    // The name of a file inside, which need not exist.
    std::string file(const std::string& name) const {
        return path_ + "/" + name;
    }

  private:
    std::string path_;
};

// The whole contents of a file; empty when it cannot be read.
inline std::string read_file(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

#endif
