#pragma once
// Names the cases of a parameterized test after their `what` text, so that a failure says which
// case it was in words: "stopped and disabled" becomes "stopped_and_disabled".

#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace webrig::testing {

struct NameFromWhat {
    template <typename Param>
    std::string operator()(const ::testing::TestParamInfo<Param>& info) const {
        std::string name = info.param.what;
        for (char& ch : name) {
            ch = std::isalnum(static_cast<unsigned char>(ch)) ? ch : '_';
        }
        return name;
    }
};

}  // namespace webrig::testing
