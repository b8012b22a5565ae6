#ifndef FUZZ_SUPPORT_EXPECT_H
#define FUZZ_SUPPORT_EXPECT_H

/// Ends the process as a finding of the fuzzer, saying what was expected, unless `holds`.
void expect(bool holds, const char* expected);

#endif
