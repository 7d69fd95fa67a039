// The GUI tests need one QApplication for the whole run; GoogleTest runs inside it.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
  // Without a display the offscreen platform stands in, so the tests run anywhere.
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
