// Libraries that a document names: a logger factory, the dye-trace filter and a renderer.

#include <gtest/gtest.h>

#include "support/ChildProcess.h"
#include "support/Workplace.h"

TEST(LoadedLibraries, AreFoundByNameAndUsedAgainByEveryRun) {
  Workplace workplace;
  Workplace::write("loaded.xml",
                   "<log4j:configuration><logger name='made' class='a.Loud'>"
                   "<appender-ref ref='F'/></logger>"
                   "<categoryFactory class='x.y.loggerFactory'><param name='n' value='v'/>"
                   "</categoryFactory>"
                   "<renderer renderedClass='Order' renderingClass='renderer'/>"
                   "<renderer renderedClass='None' renderingClass='noSuchLibrary'/>"
                   "<appender name='F' class='LOGFileAppender'><param name='File' value='f.log'/>"
                   "<layout class='LOGPatternLayout'>"
                   "<param name='ConversionPattern' value='%c %m%n'/></layout>"
                   "<filter class='LOGLogUVDDyeTraceFilter'/></appender></log4j:configuration>");
  ASSERT_EQ(ChildProcess(LOG4ZEB_LOADED_LIBRARIES, {}).wait().exitCode, 0);
  EXPECT_EQ(Workplace::lines("f.log"),
            (std::vector<std::string>{"made! dyed text", "made! dyed order 7", "made! dyed text",
                                      "made! dyed order 7"}));
  EXPECT_EQ(Workplace::diagnosticsEqual("log4zeb: load LOGLogUVDDyeTraceFilter library."), 1);
  EXPECT_EQ(Workplace::diagnosticsEqual("log4zeb: the LOGLogUVDDyeTraceFilter library is loaded, "
                                        "create the filter"),
            2);
  EXPECT_EQ(Workplace::diagnosticsEqual("log4zeb: Desired category factory: [loggerFactory]"), 2);
  EXPECT_EQ(Workplace::diagnosticsWith("noSuchLibrary"), 2);
}
