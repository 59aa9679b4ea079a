// A job with some files of samples, and how tests ask it.

#ifndef TESTS_TOOLS_JOB_FIXTURE_H_
#define TESTS_TOOLS_JOB_FIXTURE_H_

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include "tests/testing/tool_process.h"

namespace vrx::test {

class Job : public ToolProcess {
 protected:
  void SetUp() override {
    folder_.Write("s.csv", Header() + Flat("grey", "40") + Flat("white", "80") + Flat("black", "5"));
    folder_.Write("t.csv", Header() + Flat("t1", "40") + Flat("t2", "41.8") + Flat("t3", "44"));
    folder_.Write("named.csv", Header("standard,id") + Flat("white,n1", "80.2") + Flat("grey,n2", "40.2"));
    Good("job create j");
  }

  // Runs what must end well.
  std::string Good(const std::string& arguments) {
    const Result result = Run(arguments);
    EXPECT_EQ(result.status, 0) << arguments << "\n" << result.err;
    return result.out;
  }
  void AddStandards() {
    Good("job add-standard s.csv --job j --system lab --tolerance 1.5 --illuminants D65,A");
  }
  std::vector<std::string> Column(const std::string& arguments, const std::string& name) {
    std::istringstream lines(Good(arguments + " --format csv"));
    std::vector<std::string> values;
    std::size_t place = 0;
    for (std::string line; std::getline(lines, line);) {
      std::vector<std::string> fields(1);
      bool isQuoted = false;
      for (const char c : line) {
        isQuoted ^= c == '"';
        if (c == ',' && !isQuoted)
          fields.emplace_back();
        else if (c != '"')
          fields.back() += c;
      }
      const auto found = std::ranges::find(fields, name);
      if (values.empty() && place == 0 && found != fields.end()) {
        place = static_cast<std::size_t>(found - fields.begin()) + 1;
      } else if (place > 0 && place <= fields.size()) {
        values.push_back(fields[place - 1]);
      }
    }
    return values;
  }
  std::string Fact(const std::string& property, const std::string& job = "j") {
    std::istringstream lines(Good("job info --format csv --job " + job));
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(property + ",")) return line.substr(property.size() + 1);
    }
    return "";
  }
  void ExpectVerified(const std::string& job = "j") {
    const Result result = Run("job verify --format csv --job " + job);
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_NE(result.out.find("\nfaults,0\n"), std::string::npos) << result.out;
  }
};

}  // namespace vrx::test

#endif  // TESTS_TOOLS_JOB_FIXTURE_H_
