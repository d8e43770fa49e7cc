// Pictures, the controls that show one, and the lists that hold them.
#pragma once

#include <cstdint>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/Controls.h"

namespace nomira {

// A picture is known by its name alone; what it looks like is the view's business. No name is no
// picture.
struct Picture {
    Text sName;
    bool operator==(const Picture&) const = default;
};

// A field that shows a picture, and may hold other controls.
class PictureBox : public Control {
  public:
    using Control::Control;
    const nomira::Picture& Picture() const { return m_picture; }
    void SetPicture(const nomira::Picture& picture);

  private:
    nomira::Picture m_picture;
};

// A picture straight on its container; it holds nothing.
class Image : public PictureBox {
  public:
    using PictureBox::PictureBox;
};

// A line around a part of a form.
class Shape : public Control {
  public:
    using Control::Control;
};

// One picture of a list.
struct ListImage {
    nomira::Picture Picture;
};

// A store of pictures of one size; it has no place on the form.
class PictureList : public Control {
  public:
    using Control::Control;

    // One-based. Raises IndexOutOfBounds.
    const ListImage& ListImages(std::int16_t nIndex) const;
    std::int16_t ImageCount() const;
    // A new last picture.
    void AddImage(const nomira::Picture& picture);

    // Dots; given at design time.
    std::int16_t ImageWidth() const { return m_nImageWidth; }
    std::int16_t ImageHeight() const { return m_nImageHeight; }
    void SetImageSize(std::int16_t nWidth, std::int16_t nHeight);

  private:
    std::vector<ListImage> m_images;
    std::int16_t m_nImageWidth = 0, m_nImageHeight = 0;
};

}  // namespace nomira
