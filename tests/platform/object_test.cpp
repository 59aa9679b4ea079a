#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include <vrxmath/platform/message_box.h>
#include <vrxmath/platform/object.h>

#include "tests/testing/messages.h"

namespace vrx {
namespace {

class CShape : public CObject {
  VRX_DECLARE_DYNAMIC();
};
class CCircle : public CShape {
  VRX_DECLARE_DYNAMIC();
};
class CUnnamedCircle : public CCircle {};
VRX_IMPLEMENT_DYNAMIC(CShape, CObject)
VRX_IMPLEMENT_DYNAMIC(CCircle, CShape)

TEST(Object, KnowsItsClassThroughTheBase) {
  const std::unique_ptr<CObject> shape = std::make_unique<CShape>();
  const std::unique_ptr<CObject> circle = std::make_unique<CUnnamedCircle>();
  EXPECT_STREQ(shape->GetRuntimeClass().name, "CShape");
  EXPECT_STREQ(circle->GetRuntimeClass().name, "CCircle");  // the nearest class that declares itself
  EXPECT_TRUE(circle->IsKindOf(CCircle::kClass));
  EXPECT_TRUE(circle->IsKindOf(CShape::kClass));
  EXPECT_TRUE(circle->IsKindOf(CObject::kClass));
  EXPECT_FALSE(shape->IsKindOf(CCircle::kClass));
}

#if !defined(_WIN32)  // where a window would wait for an answer
TEST(MessageBox, WithoutAHandlerTheTextGoesToStandardError) {
  {
    test::MessageRecorder recorder;  // its end brings the default back
    ShowMessage(u"45\u00B0", MessageIcon::kExclamation);
    EXPECT_EQ(recorder.Take(), std::vector<std::string>{"45\u00B0"});
    EXPECT_EQ(recorder.LastIcon(), MessageIcon::kExclamation);
  }
  testing::internal::CaptureStderr();
  ShowMessage(u"45\u00B0");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "45\u00B0\n");
}
#endif

}  // namespace
}  // namespace vrx
