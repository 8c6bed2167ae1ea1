#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "foundation/class_factory.h"
#include "support/log_capture.h"

namespace {

class CTestPlain : public CVrObject {
public:
    int left = 5;
    int untouched; // relies on the zeroed memory
};

class CTestTyped : public CVrObject {
public:
    uint32_t type = 0;
    CVrxStringU className;
};

VR_REGISTER_CLASS(CTestPlain)
VR_REGISTER_CLASS_WITH(CTestTyped, object->type = 17; object->className = "CTestTyped")

} // namespace

TEST(ClassFactoryTest, CreatesDistinctObjectsWithDefaults) {
    std::unique_ptr<CVrObject> first(CClassFactory::Instance().Create("CTestPlain"));
    std::unique_ptr<CVrObject> second(CClassFactory::Instance().Create("CTestPlain"));
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    EXPECT_EQ(static_cast<CTestPlain*>(second.get())->left, 5);
}

TEST(ClassFactoryTest, CreatorSetsWhatItsLayerAsksFor) {
    std::unique_ptr<CVrObject> object(CClassFactory::Instance().Create("CTestTyped"));
    auto* typed = dynamic_cast<CTestTyped*>(object.get());
    ASSERT_TRUE(typed);
    EXPECT_EQ(typed->type, 17u);
    EXPECT_EQ(typed->className, "CTestTyped");
}

TEST(ClassFactoryTest, UnknownNamesAreLoggedWithAllThatCouldHaveBeenMeant) {
    LogCapture log;
    EXPECT_EQ(CClassFactory::Instance().Create("CTestPlane"), nullptr);
    auto lines = log.All();
    ASSERT_EQ(lines.size(), static_cast<size_t>(CClassFactory::Instance().GetCount()) + 1);
    EXPECT_TRUE(lines[0].ends_with("RK CClassFactory::Create: class CTestPlane not found"));
    for (std::string& line : lines)
        line.erase(0, line.rfind(' ') + 1);
    EXPECT_TRUE(std::is_sorted(lines.begin() + 1, lines.end()));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "CTestTyped"), 1);
    EXPECT_EQ(CClassFactory::Instance().Create(CVrxStringU()), nullptr);
}

TEST(ClassFactoryTest, LaterRegistrationReplacesTheCreator) {
    auto& factory = CClassFactory::Instance();
    factory.Register("CTestReplaced", []() -> CVrObject* { return new CTestPlain; });
    const int32_t count = factory.GetCount();
    factory.Register("CTestReplaced", []() -> CVrObject* { return new CTestTyped; });
    EXPECT_EQ(factory.GetCount(), count);
    std::unique_ptr<CVrObject> object(factory.Create("CTestReplaced"));
    EXPECT_TRUE(dynamic_cast<CTestTyped*>(object.get()));
}

TEST(ClassFactoryTest, ObjectTypesNameTheirClasses) {
    EXPECT_EQ(CClassFactory::GetGuiClassName(342), "CVrGuiSwitch");
    for (const uint32_t shading : {348u, 476u, 502u})
        EXPECT_EQ(CClassFactory::GetGuiClassName(shading), "CVrGuiAutoJalousie2");
    EXPECT_EQ(CClassFactory::GetStructureClassName(110), "CVrStructureItemStatus");
    EXPECT_TRUE(CClassFactory::GetGuiClassName(12345).IsEmpty());
    EXPECT_TRUE(CClassFactory::GetGuiClassName(0).IsEmpty());
}
