#include "adapters/wx/PictureStore.h"

#include <wx/icon.h>
#include <wx/image.h>
#include <wx/init.h>
#include <wx/mstream.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "adapters/memory/MemoryMachine.h"
#include "adapters/wx/EmbeddedPictures.h"
#include "testing/TextPrinting.h"
#include "ui/NomiraMain.h"
#include "ui/StdBofForm.h"
#include "ui/StdForm.h"
#include "ui/formlayer/Buttons.h"
#include "ui/formlayer/Picture.h"

namespace nomira::wx {
namespace {

constexpr TextView kApplicationPicture = u"picApplication";
constexpr int kTwipsOfADot = 15;

// The toolkit decodes pictures without a display; no window is made here.
class PictureStoreTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        s_toolkit = std::make_unique<wxInitializer>();
        ASSERT_TRUE(s_toolkit->IsOk());
        wxImage::AddHandler(new wxPNGHandler);
    }
    static void TearDownTestSuite() { s_toolkit.reset(); }

    memory::MemoryMachine machine;
    const NomiraMain desktop;
    const StdBofForm pendant;
    const StdForm batch;

    void ForEachControl(const std::function<void(Control&)>& visit) const {
        for (const Form* form :
             {static_cast<const Form*>(&desktop), static_cast<const Form*>(&pendant),
              static_cast<const Form*>(&batch)})
            form->ForEachControl(visit);
    }

  private:
    static inline std::unique_ptr<wxInitializer> s_toolkit;
};

std::vector<Text> NamesIn(const Control& control) {
    std::vector<Text> names;
    if (const auto* list = dynamic_cast<const PictureList*>(&control)) {
        for (std::int16_t n = 1; n <= list->ImageCount(); ++n)
            names.push_back(list->ListImages(n).Picture.sName);
    }
    if (const auto* box = dynamic_cast<const PictureBox*>(&control))
        names.push_back(box->Picture().sName);
    if (const auto* button = dynamic_cast<const Button*>(&control)) {
        names.push_back(button->Picture().sName);
        names.push_back(button->DisabledPicture().sName);
    }
    std::erase(names, Text());
    return names;
}

std::set<Text> StoredNames() {
    std::set<Text> names;
    for (const EmbeddedPicture& picture : EmbeddedPictures())
        names.emplace(picture.sName);
    return names;
}

wxImage Decoded(const EmbeddedPicture& picture) {
    wxMemoryInputStream png(picture.png.data(), picture.png.size());
    return wxImage(png, wxBITMAP_TYPE_PNG);
}

// Dots by dots, in the order of the store.
std::vector<wxImage> Rasters(TextView sName) {
    std::vector<wxImage> rasters;
    for (const EmbeddedPicture& picture : EmbeddedPictures())
        if (picture.sName == sName) rasters.push_back(Decoded(picture));
    return rasters;
}

using Rgba = std::array<unsigned char, 4>;

// The colours of the dots that are seen, with the count of their dots.
std::map<Rgba, int> ColoursOf(const wxImage& image) {
    std::map<Rgba, int> colours;
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            const unsigned char nAlpha = image.HasAlpha() ? image.GetAlpha(x, y) : 255;
            if (nAlpha == 0) continue;
            ++colours[{image.GetRed(x, y), image.GetGreen(x, y), image.GetBlue(x, y), nAlpha}];
        }
    }
    return colours;
}

int SeenDots(const wxImage& image) {
    int nDots = 0;
    for (const auto& [colour, nCount] : ColoursOf(image))
        nDots += nCount;
    return nDots;
}

bool IsGrey(const wxImage& image) {
    const auto colours = ColoursOf(image);
    return std::all_of(colours.begin(), colours.end(), [](const auto& entry) {
        const Rgba& colour = entry.first;
        return colour[0] == colour[1] && colour[1] == colour[2];
    });
}

TEST_F(PictureStoreTest, EveryPictureOfAListHasTheListsSize) {
    int nLists = 0;
    ForEachControl([&](Control& control) {
        const auto* list = dynamic_cast<const PictureList*>(&control);
        if (!list) return;
        ++nLists;
        for (const Text& sName : NamesIn(control))
            EXPECT_EQ(PictureBundle(sName).GetDefaultSize(),
                      wxSize(list->ImageWidth(), list->ImageHeight()))
                << testing::Printable(sName);
    });
    EXPECT_EQ(nLists, 5);
}

TEST_F(PictureStoreTest, EveryPictureOfAControlFitsIntoIt) {
    int nPictures = 0;
    ForEachControl([&](Control& control) {
        if (dynamic_cast<const PictureList*>(&control)) return;
        for (const Text& sName : NamesIn(control)) {
            ++nPictures;
            const wxSize size = PictureBundle(sName).GetDefaultSize();
            EXPECT_GT(size.GetWidth(), 0) << testing::Printable(sName);
            EXPECT_LE(size.GetWidth() * kTwipsOfADot, control.Width()) << testing::Printable(sName);
            EXPECT_LE(size.GetHeight() * kTwipsOfADot, control.Height())
                << testing::Printable(sName);
        }
    });
    EXPECT_EQ(nPictures, 3);
}

TEST_F(PictureStoreTest, NothingInTheStoreIsUnused) {
    std::set<Text> used{Text(kApplicationPicture)};
    ForEachControl([&](Control& control) {
        for (const Text& sName : NamesIn(control))
            used.insert(sName);
    });
    EXPECT_EQ(StoredNames(), used);
}

TEST_F(PictureStoreTest, UnknownNamesGiveNoPicture) {
    for (const TextView sName : {u"", u"picNoSuch", u"pictreeroot", u"picTree", u"picTreeRoot "})
        EXPECT_FALSE(PictureBundle(sName).IsOk()) << testing::Printable(sName);
}

// As it was made, so that nothing is lost: the store holds the very dots.
TEST_F(PictureStoreTest, EachPictureServesDenseDisplaysAsItWasMade) {
    for (const Text& sName : StoredNames()) {
        if (sName == kApplicationPicture) continue;
        const wxBitmapBundle bundle = PictureBundle(sName);
        const std::vector<wxImage> rasters = Rasters(sName);
        ASSERT_EQ(rasters.size(), 3U) << testing::Printable(sName);
        for (std::size_t n = 0; n < rasters.size(); ++n) {
            const double nScale = 1 + 0.5 * static_cast<double>(n);
            const wxSize size = bundle.GetPreferredBitmapSizeAtScale(nScale);
            EXPECT_EQ(size, bundle.GetDefaultSize() * nScale) << testing::Printable(sName);
            EXPECT_EQ(ColoursOf(bundle.GetBitmap(size).ConvertToImage()), ColoursOf(rasters[n]))
                << testing::Printable(sName);
        }
    }
}

TEST_F(PictureStoreTest, OtherSizesAreMixedFromALargerRaster) {
    const wxBitmapBundle bundle = PictureBundle(u"picLinkDown");
    for (const int nSize : {16, 20, 60, 96, 200}) {
        const wxSize size(nSize, nSize);
        EXPECT_EQ(bundle.GetBitmap(size).GetSize(), size);
    }
    const wxImage small = bundle.GetBitmap(wxSize(20, 20)).ConvertToImage();
    const wxImage dropped = Rasters(u"picLinkDown").front().Scale(20, 20, wxIMAGE_QUALITY_NEAREST);
    EXPECT_GT(ColoursOf(small).size(), ColoursOf(dropped).size());
}

TEST_F(PictureStoreTest, TheRastersHaveTheirSizeAndAreDrawnOn) {
    for (const EmbeddedPicture& picture : EmbeddedPictures()) {
        const wxImage image = Decoded(picture);
        ASSERT_TRUE(image.IsOk()) << testing::Printable(picture.sName);
        EXPECT_EQ(image.GetSize(), wxSize(picture.nWidth, picture.nHeight))
            << testing::Printable(picture.sName);
        const int nDots = picture.nWidth * picture.nHeight;
        EXPECT_GT(SeenDots(image), nDots / 4) << testing::Printable(picture.sName);
        EXPECT_GT(ColoursOf(image).size(), 1U) << testing::Printable(picture.sName);
    }
}

// The drawing stays, its colours go.
TEST_F(PictureStoreTest, ADisabledPictureIsItsTwinInGrey) {
    int nTwins = 0;
    for (const Text& sName : StoredNames()) {
        if (!sName.ends_with(u"Off")) continue;
        ++nTwins;
        const auto disabled = Rasters(sName);
        const auto enabled = Rasters(sName.substr(0, sName.size() - 3));
        ASSERT_EQ(disabled.size(), enabled.size()) << testing::Printable(sName);
        for (std::size_t n = 0; n < disabled.size(); ++n) {
            EXPECT_TRUE(IsGrey(disabled[n])) << testing::Printable(sName);
            EXPECT_FALSE(IsGrey(enabled[n])) << testing::Printable(sName);
            EXPECT_EQ(SeenDots(disabled[n]), SeenDots(enabled[n])) << testing::Printable(sName);
        }
    }
    EXPECT_EQ(nTwins, 4);
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// So that each drawing may become a disabled picture.
TEST_F(PictureStoreTest, EveryColourOfADrawingHasItsGrey) {
    const std::filesystem::path drawings(NOMIRA_DRAWINGS);
    const std::string sGreys = ReadFile(drawings / "greys.css");
    const std::regex coloured(R"re((fill|stroke)="([^"]+)")re");
    int nDrawings = 0;
    for (const auto& entry : std::filesystem::directory_iterator(drawings)) {
        if (entry.path().extension() != ".svg") continue;
        ++nDrawings;
        const std::string sDrawing = ReadFile(entry.path());
        for (std::sregex_iterator hit(sDrawing.begin(), sDrawing.end(), coloured), end; hit != end;
             ++hit) {
            if ((*hit)[2] == "none") continue;
            EXPECT_NE(sGreys.find('[' + hit->str() + ']'), std::string::npos)
                << entry.path() << ": " << hit->str();
        }
    }
    EXPECT_GT(nDrawings, 20);
}

TEST_F(PictureStoreTest, NoTwoPicturesLookAlike) {
    std::map<std::vector<unsigned char>, TextView> seen;
    for (const EmbeddedPicture& picture : EmbeddedPictures()) {
        const auto [other, bNew] =
            seen.try_emplace({picture.png.begin(), picture.png.end()}, picture.sName);
        EXPECT_TRUE(bNew) << testing::Printable(picture.sName) << " looks like "
                          << testing::Printable(other->second);
    }
}

TEST_F(PictureStoreTest, TheApplicationHasItsIconInEachSize) {
    const wxIconBundle icons = ApplicationIcons();
    ASSERT_EQ(icons.GetIconCount(), 4U);
    for (const int nSize : {16, 32, 48, 256}) {
        const wxIcon icon = icons.GetIcon(wxSize(nSize, nSize), wxIconBundle::FALLBACK_NONE);
        ASSERT_TRUE(icon.IsOk()) << nSize;
        EXPECT_EQ(icon.GetWidth(), nSize);
    }
}

// The page's table lines, by the names at their beginning.
std::map<std::string, std::string> LinesOfThePage() {
    std::map<std::string, std::string> lines;
    std::ifstream in(NOMIRA_PICTURES_PAGE);
    for (std::string sLine; std::getline(in, sLine);) {
        if (!sLine.starts_with("| `pic")) continue;
        const bool bNew = lines.try_emplace(sLine.substr(3, sLine.find('`', 3) - 3), sLine).second;
        EXPECT_TRUE(bNew) << sLine;
    }
    return lines;
}

std::string Narrow(TextView sText) {
    return {sText.begin(), sText.end()};
}

TEST_F(PictureStoreTest, ThePageOfThePicturesTellsEachByNameAndSize) {
    std::map<std::string, std::string> lines = LinesOfThePage();
    EXPECT_EQ(lines.size(), StoredNames().size());
    for (const Text& sName : StoredNames()) {
        const std::string sLine = lines[Narrow(sName)];
        const wxSize size = PictureBundle(sName).GetDefaultSize();
        std::ostringstream told;
        told << "| " << size.GetWidth() << " × " << size.GetHeight();
        EXPECT_NE(sLine.find(told.str()), std::string::npos) << Narrow(sName) << ": " << sLine;
    }
}

TEST_F(PictureStoreTest, ThePageOfThePicturesTellsThePlacesInTheLists) {
    std::map<std::string, std::string> lines = LinesOfThePage();
    ForEachControl([&](Control& control) {
        const auto* list = dynamic_cast<const PictureList*>(&control);
        if (!list) return;
        for (std::int16_t n = 1; n <= list->ImageCount(); ++n) {
            const std::string sPicture = Narrow(list->ListImages(n).Picture.sName);
            const std::string sPlace =
                "| `" + Narrow(list->Name()) + "` " + std::to_string(n) + " |";
            EXPECT_NE(lines[sPicture].find(sPlace), std::string::npos)
                << sPicture << ": " << sPlace;
        }
    });
}

}  // namespace
}  // namespace nomira::wx
