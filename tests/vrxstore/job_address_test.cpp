// No password of a server's URL is shown, however it is written.

#include <vrxstore/job_address.h>

#include <gtest/gtest.h>
#include <string>

namespace vrx::store {
namespace {

TEST(JobAddress, PasswordsAreHidden) {
  const struct {
    std::string url, shown;
    bool isPlain;
  } kRows[] = {
      {"plant.vrxjob", "plant.vrxjob", true},
      {"postgresql://jd@db:5432/plant", "postgresql://jd@db:5432/plant", true},
      {"postgresql://jd:secret@db/plant?sslmode=require", "postgresql://jd:***@db/plant", true},
      {"postgres://jd:secret@[::1]:5432,b:5433/plant", "postgres://jd:***@[::1]:5432,b:5433/plant", true},
      {"postgresql:///plant?password=secret", "postgresql:///plant", true},
      {"postgresql://db/plant?pass%77ord=secret", "postgresql://db/plant", true},
      {"postgresql://jd:se@cret@db/plant", "postgresql://jd:***@db/plant", false},
      {"postgresql://jd:se/cret@db/plant", "postgresql://jd:***@db/plant", false},
      {"postgresql://jd:se?cret@db/plant", "postgresql://jd:***", false},
      {"postgresql://jd:12?34@db/plant", "postgresql://jd:***", false},
      {"postgresql://jd:secret", "postgresql://jd:***", false},
      {"postgresql://jd:secret/plant", "postgresql://jd:***", false},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(ShownJob(row.url), row.shown);
    EXPECT_EQ(!IsOnServer(row.url) || FaultOfAddress(row.url).empty(), row.isPlain) << row.url;
  }
}

}  // namespace
}  // namespace vrx::store
