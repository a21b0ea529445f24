// The view chosen in the window's view chooser is the one a render to file looks through.

#include "oxMenuComboBox.h"
#include "oxOutputTestSupport.h"
#include "oxSceneServices.h"

#include <OpenImageIO/imageio.h>

namespace {

class ViewRenderTest : public RenderJobTest {
protected:
    // Chooses the view from the menu, renders, and reads the image back.
    std::vector<unsigned char> renderThrough(const std::string& view, const std::string& file)
    {
        if (view.empty())
            window()->_view->reset();
        else
            window()->_view->change(
                QVariant(oxNodeUtils::findNode(oxUberCameraPool::the()->getRoot(), view)->getId()));
        current().filename = dir.file(file);
        EXPECT_FALSE(module->renderPresetToFile(record())) << "not cancelled";
        auto input = OIIO::ImageInput::open(dir.file(file));
        if (!input)
            return {};
        const OIIO::ImageSpec& spec = input->spec();
        std::vector<unsigned char> pixels(size_t(spec.width) * spec.height * spec.nchannels);
        input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::UINT8, pixels.data());
        return pixels;
    }
};

} // namespace

TEST_F(ViewRenderTest, RenderLooksThroughTheChosenView)
{
    const std::vector<unsigned char> front = renderThrough("Front", "front.png");
    const std::vector<unsigned char> top = renderThrough("Top", "top.png");
    ASSERT_FALSE(front.empty());
    EXPECT_NE(front, top);
    // The same choice again gives the same picture, also after rendering through "Current".
    renderThrough("", "current.png");
    EXPECT_EQ(renderThrough("Front", "again.png"), front);
}
