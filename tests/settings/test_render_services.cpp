#include "oxSettingsTestSupport.h"

#include "oxRaytracingUtilsBase.h"
#include "oxTBBInit.h"

using ServiceTest = oxSettingsTest;

TEST_F(ServiceTest, StartValuesAreThePreferenceDefaults)
{
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 256);
    EXPECT_EQ(oxRenderParameter::getStillFrameQualityMode(), 3);
    EXPECT_EQ(oxRenderParameter::getRenderTimeInSeconds(), 90u);
    EXPECT_FLOAT_EQ(oxRenderParameter::getLightEvaluationThreshold(), 0.001f);
    EXPECT_TRUE(oxRenderParameter::getUseRaySplitting());
    EXPECT_EQ(oxPixelfilterFactory::getPixelFilterType(), 7);
    EXPECT_EQ(oxOSGWidget::getSamplesThreshold(), 1);
    oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils();
    ASSERT_NE(utilities, nullptr);
    EXPECT_EQ(utilities->getNurbsMaxDepthCurve(), 6);
    EXPECT_FLOAT_EQ(utilities->getNurbsThresholdSurface(), 0.975f);
}

TEST_F(ServiceTest, ListenersHearChangesOnlyAndMayLeaveWhileCalled)
{
    std::vector<std::string> heard;
    int handle = 0;
    handle = oxRenderParameter::addListener([&](const char* parameter) {
        heard.push_back(parameter);
        oxRenderParameter::removeListener(handle);
    });
    oxRenderParameter::setImageSamples(256); // unchanged: no notice
    oxRenderParameter::setImageSamples(512);
    oxRenderParameter::setImageSamples(1024); // the listener is gone
    EXPECT_EQ(heard, std::vector<std::string>{"ImageSamples"});
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 1024);

    std::vector<std::string> widget;
    const int widgetHandle =
        oxOSGWidget::addListener([&](const char* parameter) { widget.push_back(parameter); });
    oxOSGWidget::setSim2LuminanceMapping(2000.0f);
    oxOSGWidget::setRaytracingMode(true, true);
    oxOSGWidget::removeListener(widgetHandle);
    EXPECT_EQ(widget, (std::vector<std::string>{"Sim2LuminanceMapping", "SpectralRaytracingMode",
                                                "GpuRaytracing"}));
}

TEST_F(ServiceTest, PixelFilterReachesTheRaytracerOnlyOnUpdate)
{
    oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils();
    oxPixelfilterFactory::setPixelFilterType(2);
    oxPixelfilterFactory::setPixelFilterHeight(3.0f);
    EXPECT_EQ(utilities->getActivePixelFilter().type, 7);
    utilities->updatePixelFilter();
    EXPECT_EQ(utilities->getActivePixelFilter().type, 2);
    EXPECT_FLOAT_EQ(utilities->getActivePixelFilter().width, 1.0f);
    EXPECT_FLOAT_EQ(utilities->getActivePixelFilter().height, 3.0f);
}

TEST_F(ServiceTest, RaytracingUtilitiesCanBeAbsentAndComeBackReset)
{
    oxRaytracingManager::getRaytracingUtils()->setNurbsMode(1);
    oxRaytracingManager::setRaytracingUtils(nullptr);
    EXPECT_EQ(oxRaytracingManager::getRaytracingUtils(), nullptr);
    oxRaytracingManager::resetRaytracingUtils();
    ASSERT_NE(oxRaytracingManager::getRaytracingUtils(), nullptr);
    EXPECT_EQ(oxRaytracingManager::getRaytracingUtils()->getNurbsMode(), 0);

    oxRenderParameter::setSpectralRaytracing(true);
    EXPECT_TRUE(oxRaytracingManager::isSpectralRaytracingEnable());
    EXPECT_FALSE(oxRaytracingManager::isGpuRaytracingEnable());
}

TEST_F(ServiceTest, CoreLimitIsAppliedToTheThreadPool)
{
    oxTBBInit& tbb = oxTBBInit::the();
    EXPECT_GE(tbb.getNumLogicalCores(), 1);
    tbb.setCoreUsageLimit(1);
    EXPECT_EQ(tbb.getCoreUsageLimit(), 1);
    EXPECT_EQ(tbb.getActiveParallelism(), 1);

    tbb.setCoreUsageLimit(0);
    EXPECT_EQ(tbb.getCoreUsageLimit(), oxTBBInit::noLimit);
    EXPECT_GE(tbb.getActiveParallelism(), tbb.getNumLogicalCores());

    // A later, larger limit replaces a smaller one rather than being capped by it.
    tbb.setCoreUsageLimit(1);
    tbb.setCoreUsageLimit(tbb.getNumLogicalCores() + 1);
    EXPECT_EQ(tbb.getActiveParallelism(), tbb.getNumLogicalCores() + 1);
    tbb.setCoreUsageLimit(oxTBBInit::noLimit);
    EXPECT_EQ(tbb.getCoreUsageLimit(), oxTBBInit::noLimit);
}
