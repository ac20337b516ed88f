#include "PanelPicture.h"

namespace cwbsim {

void PanelPicture::fill(host::device::Pixel colour) {
    *this = PanelPicture();
    mSet = true;
    mSource = FrameSource::Fill;
    mColour = colour;
}

void PanelPicture::pattern(const std::string& name) {
    *this = PanelPicture();
    mSet = true;
    mSource = FrameSource::Pattern;
    mPattern = name;
}

void PanelPicture::image(host::device::Frame frame) {
    *this = PanelPicture();
    mSet = true;
    mSource = FrameSource::Png;
    mImage = std::make_shared<const host::device::Frame>(std::move(frame));
}

void PanelPicture::paint(const aidl::vendor::zarel::hardware::cwb::Rect& rect,
                         host::device::Pixel colour) {
    if (!mSet) fill({0, 0, 0});
    mPaints.emplace_back(rect, colour);
}

host::device::Frame PanelPicture::render(int width, int height) const {
    host::device::Frame frame;
    switch (mSource) {
        case FrameSource::Png:
            frame = *mImage;
            break;
        case FrameSource::Pattern:
            frame = host::device::Frame::pattern(mPattern, width, height)
                            .value_or(host::device::Frame::filled(width, height, 0, 0, 0));
            break;
        default:
            frame = host::device::Frame::filled(width, height, mColour.r, mColour.g, mColour.b);
            break;
    }
    for (const auto& [rect, colour] : mPaints) {
        frame.fillRect(rect.left, rect.top, rect.right, rect.bottom, colour);
    }
    return frame;
}

}  // namespace cwbsim
