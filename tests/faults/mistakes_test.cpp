// Mistakes of a caller that must not make a file that others can't read.

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <memory>

using namespace ODF;

TEST(Mistakes, ANumberWithoutAKeyIsNotWritten) {
    const std::unique_ptr<CSDObject> object(ClassOfElement("draw:glue-point")->create());
    auto& point = static_cast<CDrawGluePoint&>(*object);
    point.SetSvgX(u"1cm");
    const std::string without = ToXml(point, {}, Fidelity::Everything);
    for (const int number : {-1, 1000, 0x7FFFFFFF}) {
        point.SetDrawAlign(static_cast<ST_DrawAlign>(number));
        EXPECT_EQ(ToXml(point, {}, Fidelity::Everything), without) << number;
    }
    point.SetDrawAlign(static_cast<ST_DrawAlign>(0));
    EXPECT_NE(ToXml(point, {}, Fidelity::Everything).find("draw:align=\"top-left\""), std::string::npos);
}
