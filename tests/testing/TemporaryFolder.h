// A folder of its own for one test, gone with all in it when the test is over.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nomira::testing {

class TemporaryFolder {
  public:
    // In the system's place for temporary files, unless another folder is given.
    explicit TemporaryFolder(
        const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string sName = (parent / "nomira-XXXXXX").string();
        if (!::mkdtemp(sName.data())) throw std::runtime_error("no temporary folder");
        m_path = sName;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    std::filesystem::path operator/(std::string_view sName) const { return m_path / sName; }

    // Makes the file with the folders above it.
    void Put(std::string_view sName, std::string_view bytes) const {
        const std::filesystem::path file = m_path / sName;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }
    std::string Bytes(std::string_view sName) const {
        std::ifstream in(m_path / sName, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

  private:
    std::filesystem::path m_path;
};

}  // namespace nomira::testing
