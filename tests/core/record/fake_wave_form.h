#pragma once
// The main form on a wave device without sound, with an application folder
// of its own: what the recorder's tests start from.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "support/fake_wave_device.h"

namespace velaro::testing {

struct FakeWaveForm : ::testing::Test {
    ui::Headless ui;
    platform::InertPlatform inert;
    FakeWaveDevice wave{ui.loop};
    platform::Platform p = [this] {
        platform::Platform q = inert.get();
        q.wave = &wave;
        return q;
    }();
    std::string home = tempFolder() + "/velaro-wave-" + std::to_string(getpid());
    std::unique_ptr<song::frmMain> f;

    void SetUp() override {
        std::filesystem::create_directories(home);
        setenv("VELARO_HOME", home.c_str(), 1);
        f = std::make_unique<song::frmMain>(ui.rt, p);
    }
    void TearDown() override {
        f.reset();
        unsetenv("VELARO_HOME");
        std::filesystem::remove_all(home);
    }
};

}  // namespace velaro::testing
