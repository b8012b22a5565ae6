// Libraries that a document names: a logger factory, the dye-trace filter and a renderer.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/ChildProcess.h"
#include "support/Documents.h"
#include "support/Workplace.h"

TEST(LoadedLibraries, AreFoundByNameAndUsedAgainByEveryRun) {
  Workplace workplace;
  Workplace::write("loaded.xml",
                   "<log4j:configuration><logger name='made' class='a.Loud'>"
                   "<appender-ref ref='F'/></logger>"
                   "<categoryFactory class='x.y.loggerFactory'><param name='n' value='v'/>"
                   "</categoryFactory>"
                   "<renderer renderedClass='Order' renderingClass='renderer'/>"
                   "<renderer renderedClass='None' renderingClass='noSuchLibrary'/>" +
                       documents::file("F", "f.log",
                                       documents::pattern("%c %m%n") +
                                           "<filter class='LOGLogUVDDyeTraceFilter'/>") +
                       "</log4j:configuration>");
  ASSERT_EQ(ChildProcess(LOG4ZEB_LOADED_LIBRARIES, {}).wait().exitCode, 0);
  EXPECT_EQ(Workplace::lines("f.log"),
            (std::vector<std::string>{"made! dyed text", "made! dyed order 7", "made! dyed text",
                                      "made! dyed order 7"}));
  EXPECT_EQ(Workplace::debugs("load LOGLogUVDDyeTraceFilter library."), 1);
  EXPECT_EQ(Workplace::debugs("the LOGLogUVDDyeTraceFilter library is loaded, create the filter"),
            2);
  EXPECT_EQ(Workplace::debugs("Desired category factory: [loggerFactory]"), 2);
  EXPECT_EQ(Workplace::noted("noSuchLibrary"), 2);
}

TEST(LoadedLibraries, CannotReadADocumentOrShutDownWhileOneIsRead) {
  Workplace workplace;
  Workplace::write("nested.xml",
                   "<log4j:configuration threshold='OFF'><logger name='made'/><root/>"
                   "</log4j:configuration>");
  Workplace::write("loaded.xml",
                   "<log4j:configuration><root><appender-ref ref='F'/></root>"
                   "<categoryFactory class='nesting'/>"
                   "<logger name='made' class='Made'><appender-ref ref='F'/></logger>"
                   "<renderer renderedClass='Order' renderingClass='nesting'/>"
                   "<renderer renderingClass='nesting'/>" +
                       documents::file("F", "f.log") + "</log4j:configuration>");
  ASSERT_EQ(ChildProcess(LOG4ZEB_LOADED_LIBRARIES, {}).wait().exitCode, 0);
  std::vector<std::string> lines;
  for (int reading = 0; reading < 2; ++reading) {
    for (const char* const message : {"denied, for it is not dyed", "dyed text", "dyed order 7"}) {
      lines.insert(lines.end(), 2, message);  // by the logger and the root
    }
  }
  EXPECT_EQ(Workplace::lines("f.log"), lines);
  // While it is loaded, for a logger, and in each of two readings for the factory and for the one
  // renderer that has something to render.
  constexpr int TIMES = 6;
  const std::string refused =
      " -- refused, because this thread is reading a configuration document";
  EXPECT_EQ(Workplace::errors("LOGDOMConfigurator::doConfigure" + refused), 4 * TIMES);
  EXPECT_EQ(Workplace::errors("LOGDOMConfigurator::shutdown" + refused), 2 * TIMES);
}

TEST(LoadedLibraries, AreNotLoadedFromAPathThatADocumentNames) {
  Workplace workplace;
  std::filesystem::create_directory("evil");
  // What would be found, whatever the system puts around a base name.
  for (const char* const name : {"evil/good.so", "evil/good.dll"}) {
    std::filesystem::copy_file(LOG4ZEB_RENDERER_LIBRARY, name);
  }
  Workplace::configure("");
  const std::string here = std::filesystem::current_path().string();
  for (const std::string& name : {std::string("evil/good"), std::string("./evil/good"),
                                  std::string("evil\\good"), here + "/evil/good"}) {
    Workplace::clearDiagnostics();
    EXPECT_EQ(Workplace::configure("<categoryFactory class='" + name + "'/>" +
                                   "<renderer renderedClass='Order' renderingClass='" + name +
                                   "'/><logger name='made' class='a.Loud'/>"),
              1);
    EXPECT_EQ(Workplace::noted("is not loaded: a document names libraries without"), 2);
    EXPECT_EQ(Workplace::noted("no renderer from library [" + name + "]"), 1);
    EXPECT_EQ(Workplace::noted("Logger Factory missing"), 1);
    EXPECT_EQ(Workplace::noted("An unknown exception"), 0) << "a library without factory";
  }
}
