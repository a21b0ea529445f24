#include "oxPixelFilterKernels.h"

#include <gtest/gtest.h>

#include <cmath>

// Every filter is symmetric and can be normalised over its footprint. Its sampler draws
// offsets inside the footprint in proportion to |f|, so that the mean of their signs is the
// filter's integral over that of |f|: what normalises a pixel's signed weights.
TEST(oxPixelFilterTest, EveryFilterIsNormalisedBySampling)
{
    for (int id = 0; id < oxRaytracer::pixelFilterCount; ++id) {
        const oxRay::PixelFilterEntry* filter = oxRay::findFilter(id);
        ASSERT_NE(filter, nullptr) << id;
        float integral = 0.0f, absIntegral = 0.0f;
        for (int i = 0; i < 2000; ++i) {
            const float w = filter->weight(-1.0f + (float(i) + 0.5f) / 1000.0f);
            integral += w / 1000.0f;
            absIntegral += std::fabs(w) / 1000.0f;
        }
        EXPECT_GT(integral, 0.05f) << "filter " << id;
        EXPECT_FLOAT_EQ(filter->weight(0.3f), filter->weight(-0.3f)) << "filter " << id;

        const oxRay::FilterSampler sampler(*filter);
        float previous = -1.0f, signs = 0.0f;
        constexpr int kDraws = 4096;
        for (int i = 0; i < kDraws; ++i) {
            float sign = 0.0f;
            const float x = sampler.sample((float(i) + 0.5f) / float(kDraws), sign);
            ASSERT_GE(x, previous) << "filter " << id;
            ASSERT_LE(x, 1.0f) << "filter " << id;
            signs += sign;
            previous = x;
        }
        EXPECT_NEAR(signs / float(kDraws), integral / absIntegral, 0.01f) << "filter " << id;
    }
    EXPECT_EQ(oxRay::findFilter(oxRaytracer::pixelFilterCount), nullptr);
}
