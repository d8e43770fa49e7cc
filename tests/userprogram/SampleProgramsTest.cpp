// The sample programs and the sample file of assignments, as a whole.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "testing/TextPrinting.h"
#include "userprogram/Customer2.h"
#include "userprogram/ProgramFixture.h"
#include "userprogram/RewriteUserProgram.h"

namespace nomira::testing {
namespace {

namespace fs = std::filesystem;

std::string ReadBytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The lines without their ends, which are all CR LF.
std::vector<Text> LinesOf(const std::string& bytes) {
    std::vector<Text> lines;
    for (std::size_t nFrom = 0, nEnd; (nEnd = bytes.find("\r\n", nFrom)) != std::string::npos;
         nFrom = nEnd + 2) {
        lines.push_back(Windows1252().Decode(std::string_view(bytes).substr(nFrom, nEnd - nFrom)));
    }
    return lines;
}

bool IsHeader(TextView sLine) {
    return UCase(Trim(sLine)).starts_with(u";FOLD ");
}

class SamplesTest : public ProgramFixture {
  protected:
    const fs::path m_samples = NOMIRA_SAMPLES;
};

TEST_F(SamplesTest, ProgramsAreRewrittenInTheirHeadersAlone) {
    int nPrograms = 0, nWritten = 0;
    for (const auto& entry : fs::directory_iterator(m_samples / "programs")) {
        SCOPED_TRACE(entry.path().filename().string());
        const std::string before = ReadBytes(entry.path());
        m_machine.files.Put(u"C:\\sample.src", before);
        nWritten += RewriteUserProgram(u"C:\\sample.src") ? 1 : 0;
        ++nPrograms;
        const std::vector<Text> old = LinesOf(before);
        const std::vector<Text> now = LinesOf(m_machine.files.Bytes(u"C:\\sample.src"));
        ASSERT_EQ(now.size(), old.size());
        for (std::size_t n = 0; n < old.size(); ++n) {
            EXPECT_TRUE(now[n] == old[n] || IsHeader(old[n])) << Printable(now[n]);
        }
    }
    EXPECT_EQ(nPrograms, 60);
    EXPECT_GT(nWritten, 50);
}

TEST_F(SamplesTest, AssignmentsAreHarvested) {
    m_machine.files.Put(u"C:\\samples.txt", ReadBytes(m_samples / "harvest_assignments.txt"));
    EXPECT_TRUE(HarvestFile(u"C:\\samples.txt"));
    // Five of the odd lines at the end of the file name inputs.
    const std::vector<std::size_t> counts = {29, 18, 4, 4, 4, 4, 6};
    for (std::size_t n = 0; n < counts.size(); ++n)
        EXPECT_EQ(m_colKey[n].Count(), counts[n]) << Printable(HarvestClasses()[n].sClass);
}

}  // namespace
}  // namespace nomira::testing
