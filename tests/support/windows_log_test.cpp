// The log of two processes: the file is opened without sharing, so a message is written whole or lost.

#include <gtest/gtest.h>
#include <sstream>

#include <vrxmath/platform/file_system.h>
#include <vrxmath/support/diagnostic_log.h>
#include <vrxmath/support/settings.h>

#include "tests/support/test_environment.h"
#include "tests/testing/second_process.h"

namespace vrx {
namespace {

TEST(WindowsLog, MessagesOfTwoProcessesAreWholeOrLost) {
  const FakePlatform platform;
  const test::TemporaryFolder folder;
  test::SecondProcess second(folder / "");
  const std::string message(500, second.IsFirst() ? '1' : '2');
  SetSettingInt(kDiagSection, u"General", 2);
  SetSettingString(kDiagSection, kDiagPathValue, CString::FromUtf8(second.Text()));
  {
    const auto held = second.IsFirst() ? CurrentFileSystem().OpenExclusive(DiagFileName()) : nullptr;
    second.Meet();
    if (!second.IsFirst()) DiagWrite("lost", DiagChannel::kGeneral);
    second.Meet();
  }
  for (int i = 0; i < 200; ++i) DiagWrite(message + "\n", DiagChannel::kGeneral);
  second.Meet();
  if (!second.IsFirst()) return;
  DiagWrite(message, DiagChannel::kGeneral);
  std::istringstream log(folder.Read("VrxDebug.txt"));
  std::string line;
  while (std::getline(log, line) && !log.eof()) {
    EXPECT_TRUE(line == std::string(500, '1') + '\r' || line == std::string(500, '2') + '\r') << line;
  }
  EXPECT_EQ(line, message) << "a file that nobody holds is written";
}

}  // namespace
}  // namespace vrx
