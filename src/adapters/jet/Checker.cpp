#include "adapters/jet/Checker.h"

#include <set>

#include "adapters/jet/PageAccounts.h"
#include "adapters/jet/PageAllocator.h"
#include "adapters/jet/TableChecker.h"

namespace nomira::jet {
namespace {

constexpr std::uint32_t kGlobalMapPage = 1;
constexpr std::uint8_t kGlobalMaps = 2;

void CheckOwnPages(PageStore& store, PageAccounts& accounts) {
    accounts.Claim(0, "the header");
    if (!accounts.Claim(kGlobalMapPage, "the map of free pages")) return;
    const DataPage page(store, kGlobalMapPage);
    if (!page.IsOne() || page.Owner() != kOwnerOfGlobalMap)
        accounts.Report("the page of the map of free pages doesn't say that it is one",
                        kGlobalMapPage);
    for (std::uint8_t nRow = 0; nRow < kGlobalMaps; ++nRow)
        for (const std::uint32_t nPage : UsageMap(store, {kGlobalMapPage, nRow}).BitmapPages())
            accounts.Claim(nPage, "the map of free pages");
}

void CheckTable(AccessFile& file, PageAccounts& accounts, const CatalogueEntry& entry) {
    const auto nPage = static_cast<std::uint32_t>(entry.nId);
    const std::string sName = Printable(entry.sName);
    accounts.Guard(sName, nPage, [&] {
        Table& table = file.TableAt(nPage);
        if ((table.Definition().kind == TableKind::System) != (nPage < kFirstOrdinaryPage))
            accounts.Warn(sName + ": its kind isn't that of its place", nPage);
        TableChecker(file, accounts, table, sName).Run();
    });
}

}  // namespace

std::vector<Finding> CheckFile(AccessFile& file) {
    PageAccounts accounts(file.Pages());
    accounts.Guard("the map of free pages", kGlobalMapPage,
                   [&] { CheckOwnPages(file.Pages(), accounts); });
    accounts.Guard("the catalogue", 2, [&] {
        std::set<std::int32_t> tables;
        for (const CatalogueEntry& entry : file.Catalogue()) {
            if (!entry.IsTable()) continue;
            if (tables.insert(entry.nId).second)
                CheckTable(file, accounts, entry);
            else
                accounts.Report(Printable(entry.sName) + " is another table too",
                                static_cast<std::uint32_t>(entry.nId));
        }
    });
    accounts.Guard("the map of free pages", kGlobalMapPage,
                   [&] { accounts.CompareWithFreePages(); });
    return accounts.TakeFindings();
}

}  // namespace nomira::jet
