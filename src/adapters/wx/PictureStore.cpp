#include "adapters/wx/PictureStore.h"

#include <wx/bitmap.h>
#include <wx/icon.h>
#include <wx/image.h>

#include <algorithm>

#include "adapters/wx/EmbeddedPictures.h"

namespace nomira::wx {
namespace {

using Rasters = std::span<const EmbeddedPicture>;

constexpr TextView kApplicationPicture = u"picApplication";

Rasters RastersOf(TextView sName) {
    const auto bNamed = [&](const EmbeddedPicture& raster) { return raster.sName == sName; };
    const Rasters all = EmbeddedPictures();
    const auto first = std::find_if(all.begin(), all.end(), bNamed);
    return {first, std::find_if_not(first, all.end(), bNamed)};
}

wxSize SizeOf(const EmbeddedPicture& raster) {
    return {raster.nWidth, raster.nHeight};
}

wxBitmap Decoded(const EmbeddedPicture& raster) {
    return wxBitmap::NewFromPNGData(raster.png.data(), raster.png.size());
}

// Unpacks a raster when it is asked for. The toolkit's own bundles drop dots when they make a
// picture smaller; this one mixes them, so that thin lines stay.
class RasterBundle : public wxBitmapBundleImpl {
  public:
    explicit RasterBundle(Rasters rasters) : m_rasters(rasters) {}

    wxSize GetDefaultSize() const override { return SizeOf(m_rasters.front()); }

    wxSize GetPreferredBitmapSizeAtScale(double nScale) const override {
        return GetDefaultSize() * nScale;
    }

    wxBitmap GetBitmap(const wxSize& size) override {
        const EmbeddedPicture& raster = AtLeast(size);
        const wxBitmap bitmap = Decoded(raster);
        if (SizeOf(raster) == size) return bitmap;
        return {bitmap.ConvertToImage().Rescale(size.x, size.y, wxIMAGE_QUALITY_HIGH)};
    }

  private:
    // The smallest that covers the size, or the largest of all.
    const EmbeddedPicture& AtLeast(const wxSize& size) const {
        const auto found =
            std::find_if(m_rasters.begin(), m_rasters.end(), [&](const auto& raster) {
                return raster.nWidth >= size.x && raster.nHeight >= size.y;
            });
        return found == m_rasters.end() ? m_rasters.back() : *found;
    }

    Rasters m_rasters;
};

}  // namespace

wxBitmapBundle PictureBundle(TextView sName) {
    const Rasters rasters = RastersOf(sName);
    if (rasters.empty()) return {};
    // The bundles count their references to it, and the last one deletes it.
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
    return wxBitmapBundle::FromImpl(new RasterBundle(rasters));
}

wxIconBundle ApplicationIcons() {
    wxIconBundle icons;
    for (const EmbeddedPicture& raster : RastersOf(kApplicationPicture)) {
        wxIcon icon;
        icon.CopyFromBitmap(Decoded(raster));
        icons.AddIcon(icon);
    }
    return icons;
}

}  // namespace nomira::wx
