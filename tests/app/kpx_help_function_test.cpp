#include <string>

#include <gtest/gtest.h>

#include "run_kpx.h"

namespace kelpdex::kpx {
namespace {

TEST(KpxHelpFunction, PrintsCategorySyntaxDescriptionAndExamples) {
  Result r = RunKpx({"help-function", "EDATE2"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(r.out.starts_with("category: date/time\neDate2(date, period)\n\nAdds period to date"))
      << r.out;
  EXPECT_NE(r.out.find("\n\n=eDate2(\"2005-01-01\", \"P2D\") returns \"2005-01-03\"\n"),
            std::string::npos)
      << r.out;
  EXPECT_EQ(r.out.find('\r'), std::string::npos);
  // The name as a formula writes it is found too.
  EXPECT_TRUE(RunKpx({"help-function", "left("}).out.starts_with("category: text\nleft(text"));
}

TEST(KpxHelpFunction, NamesWithoutAnEntryFail) {
  // TEXT is a function, but it has no help entry of its own.
  for (const char* name : {"text", "sumX", ""}) {
    Result r = RunKpx({"help-function", name});
    EXPECT_EQ(r.status, 1) << name;
    EXPECT_TRUE(r.out.empty());
    EXPECT_NE(r.err.find("no help entry"), std::string::npos) << r.err;
  }
  EXPECT_EQ(RunKpx({"help-function"}).status, 2);
  EXPECT_EQ(RunKpx({"help-function", "left", "right"}).status, 2);
}

}  // namespace
}  // namespace kelpdex::kpx
