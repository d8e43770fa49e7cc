#include "apps/vexon3/Seed.h"

#include "adapters/posix/NativeName.h"
#include "adapters/rpc/LocalFile.h"
#include "adapters/rpc/Wire.h"
#include "apps/vexon3/OperationFailed.h"
#include "langtools/BasicText.h"

namespace nomira::simulator {
namespace {

namespace fs = std::filesystem;

constexpr TextView kPrograms = u"TQX:\\R1\\";

void Put(const FileSpace& files, TextView sPath, std::string_view sBytes) {
    const Text sFull = Text(kPrograms) + Replace(sPath, u"/", u"\\");
    try {
        files.MakeDirectories(TextView(sFull).substr(0, sFull.rfind(u'\\')));
        files.Write(sFull, sBytes);
    } catch (const OperationFailed&) {
        throw ScenarioError("the program " + posix::ToNative(sPath) +
                            " can't be put below R1; give it a path of plain names");
    }
}

void PutFolder(const FileSpace& files, const fs::path& folder) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        const Text sPath = posix::FromNative(fs::relative(entry.path(), folder).string());
        Put(files, sPath, rpc::ReadLocalFile(entry.path(), rpc::kMaxLine));
    }
}

}  // namespace

void SeedPrograms(const Scenario& scenario, const FileSpace& files) {
    if (scenario.programFolder) PutFolder(files, *scenario.programFolder);
    for (const ProgramFile& program : scenario.programs)
        Put(files, program.sPath, program.sBytes);
}

}  // namespace nomira::simulator
