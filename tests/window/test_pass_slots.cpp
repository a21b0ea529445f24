// Every pass flag has a slot of its own that can be invoked by its name.

#include "oxRenderPasses.h"
#include "oxWindowBindingSupport.h"

#include <QMetaObject>

namespace {
using PassSlotTest = oxWindowBindingTest;
}

TEST_F(PassSlotTest, EachPassSlotCalledByNameStoresItsFlagOnly)
{
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        ASSERT_TRUE(QMetaObject::invokeMethod(window.get(), info.slot, Q_ARG(bool, true)))
            << info.slot;
        for (const oxRenderPassFlagInfo& other : kPassFlags)
            EXPECT_EQ(record().passFlag(other.flag), other.flag == info.flag)
                << info.slot << " " << other.column;
        ASSERT_TRUE(QMetaObject::invokeMethod(window.get(), info.slot, Q_ARG(bool, false)));
        EXPECT_FALSE(record().passFlag(info.flag)) << info.slot;
    }
}
