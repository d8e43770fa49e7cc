// The fold patterns over any line: the first bytes, up to a zero byte, are the text that the
// database gives for every name, the rest is the line. Only the failures that a line can earn may
// come out: an invalid call, an overflow, an invalid pattern.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "conversion/TextImport.h"
#include "database/DatabaseEngine.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "platform/Platform.h"
#include "userprogram/FoldHeader.h"

namespace nomira {
namespace {

class OpenConnection : public Connection {
  public:
    void SetProvider(TextView) override {}
    void SetConnectionText(TextView) override {}
    void Open(TextView, TextView, TextView, std::int32_t) override {}
    std::int32_t State() const override { return kStateOpen; }
    void Close() override {}
    void BeginTrans() override {}
    void CommitTrans() override {}
    void RollbackTrans() override {}
};

// One row, that answers every query: a key id, and the text.
class OneRow : public Recordset {
  public:
    explicit OneRow(const Text& sText) : m_sText(sText) {}
    void Open(TextView, Connection&, CursorKind, LockKind, std::int32_t) override {}
    std::int32_t State() const override { return kStateOpen; }
    void Close() override {}
    bool Bof() const override { return false; }
    bool Eof() const override { return false; }
    void MoveFirst() override {}
    void MoveNext() override {}
    FieldValue Field(TextView sName) override {
        if (sName == u"String") return m_sText;
        return std::int64_t{1};
    }
    void AddNew() override {}
    void SetField(TextView, const FieldValue&) override {}
    void Update() override {}

  private:
    const Text& m_sText;
};

class OneTextEngine : public DatabaseEngine {
  public:
    Text sText;
    std::unique_ptr<Connection> CreateConnection() override {
        return std::make_unique<OpenConnection>();
    }
    std::unique_ptr<Recordset> CreateRecordset() override {
        return std::make_unique<OneRow>(sText);
    }
    void CompactDatabase(TextView, TextView) override {}
};

class SilentDesktop : public Desktop {
  public:
    bool PreviousInstance() override { return false; }
    void ActivateByTitle(TextView) override {}
    std::optional<WindowHandle> FindWindow(TextView) override { return std::nullopt; }
    void BringWindowToTop(WindowHandle) override {}
    void ShowMessageBox(TextView, TextView, BoxIcon) override {}
    ScreenSize Screen() override { return {}; }
    WindowHandle NextDialogTabItem(WindowHandle, WindowHandle, bool) override { return 0; }
};

// A name that holds itself as a condition makes its line grow until positions overflow; a long
// one would take its time over that.
constexpr std::size_t kLongestText = 16;

void Rewrite(OneTextEngine& engine, std::string_view bytes) {
    const std::size_t nText = bytes.find('\0');
    const bool bText = nText != std::string_view::npos;
    engine.sText = Windows1252().Decode(bytes.substr(0, bText ? std::min(nText, kLongestText) : 0));
    g_sLine = Windows1252().Decode(bText ? bytes.substr(nText + 1) : bytes);
    const Text sBefore = g_sLine;
    g_vLongName.clear();
    g_bLineChanged = false;
    RewriteFoldLine();
    if (!g_bLineChanged && g_sLine != sBefore) throw std::logic_error("a line changed unnoticed");
}

}  // namespace
}  // namespace nomira

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    using namespace nomira;
    static SilentDesktop desktop;
    static OneTextEngine engine;
    SetPlatform({.desktop = &desktop});
    SetDatabaseEngine(&engine);
    try {
        Rewrite(engine, {reinterpret_cast<const char*>(data), nSize});
    } catch (const RuntimeError& error) {
        const bool bExpected = error.Number() == ErrorNumber::InvalidProcedureCall ||
                               error.Number() == ErrorNumber::Overflow ||
                               error.Number() == ErrorNumber::InvalidPattern;
        if (!bExpected) throw;
    }
    return 0;
}
