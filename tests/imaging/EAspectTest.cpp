#include "imaging/EAspect.h"

#include <gtest/gtest.h>

#include <string>

TEST(Aspect, ListRunsFromTheLastMadeBackToNormal) {
    std::string names;
    std::string values;
    for (const EAspect* aspect = EAspect::GetFirst(); aspect; aspect = aspect->GetNext()) {
        names += aspect->GetName() + " ";
        values += std::to_string(aspect->GetValue()) + " ";
    }
    EXPECT_EQ(names, "HDTV NTSC PAL normal ");
    EXPECT_EQ(values, "1.000000 0.900000 1.066670 1.000000 ");
    EXPECT_EQ(EAspect::GetCount(), 4);
}
