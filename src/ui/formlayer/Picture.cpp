#include "ui/formlayer/Picture.h"

#include "langtools/RuntimeError.h"

namespace nomira {

void PictureBox::SetPicture(const nomira::Picture& picture) {
    Assign(m_picture, picture, u"Picture");
}

const ListImage& PictureList::ListImages(std::int16_t nIndex) const {
    if (nIndex < 1 || nIndex > ImageCount()) Raise(ErrorNumber::IndexOutOfBounds);
    return m_images[static_cast<std::size_t>(nIndex - 1)];
}

std::int16_t PictureList::ImageCount() const {
    return ToInt16(std::ssize(m_images));
}

void PictureList::AddImage(const nomira::Picture& picture) {
    m_images.push_back({picture});
}

void PictureList::SetImageSize(std::int16_t nWidth, std::int16_t nHeight) {
    m_nImageWidth = nWidth;
    m_nImageHeight = nHeight;
}

}  // namespace nomira
