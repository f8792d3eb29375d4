#ifndef TESTS_RECORDDB_TEMPORARY_FOLDER_H
#define TESTS_RECORDDB_TEMPORARY_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

// A folder for one test, gone afterwards with all that is in it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zt-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& Path() const { return m_path; }

    std::string File(std::string_view name) const { return (m_path / name).string(); }

    std::string Write(std::string_view name, std::string_view content) const {
        std::ofstream(m_path / name, std::ios::binary) << content;
        return File(name);
    }

    // The number of files in the folder.
    std::size_t FileCount() const {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_path)) {
            ++count;
        }
        return count;
    }

  private:
    std::filesystem::path m_path;
};

#endif
