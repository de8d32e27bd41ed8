// Loading and unloading with dlopen.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "draimiofaf/extract.h"
#include "standin.h"

namespace {

constexpr uint32_t service = 633;

TEST(Load, RegistersAndReleasesEachTime) {
  for (uint32_t round = 1; round <= 1000 && !HasFailure(); ++round) {
    ASSERT_EQ(standin_service_name(service), nullptr);
    // Loading does not use operations that can fail.
    const auto failing = standin_operation_t(round % STANDIN_OPERATIONS);
    standin_fail(failing, 1, UINT32_MAX);
    void *library = dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_STREQ(standin_service_name(service), "STP MCEC Type-1 CFG LIB");
    EXPECT_STREQ(standin_mem_type_name(service, 20),
                 "STP_MCEC_LIB_MEM_mcecm_app_cmd7_extract_info_t");
    EXPECT_EQ(standin_mem_type_name(service, 21), nullptr);
    EXPECT_EQ(standin_trees(), 1U);
    EXPECT_EQ(standin_live_blocks(STANDIN_ALL_TYPES), 0U);
    standin_fail(failing, 0, 0);

    const auto extract = reinterpret_cast<decltype(&stp_mcec_type1_cfg_param_extractor)>(
        dlsym(library, "stp_mcec_type1_cfg_param_extractor"));
    ASSERT_NE(extract, nullptr);
    standin_set_trunk(1);
    void *message = standin_command(STP_MCEC_CMD_GBL_LOOPGUARD, 1, nullptr, 0);
    standin_fail(STANDIN_ALLOC, 4, 1);  // the entry is cached, the array is not returned
    uint8_t *array = nullptr;
    uint32_t count = 0;
    uint32_t is_cmd = 0;
    mcecm_app_cmd_extract_info_t *records = nullptr;
    EXPECT_EQ(extract(message, &array, &count, &is_cmd, &records), 1U);
    standin_message_free(message);
    standin_reset();
    const auto release = reinterpret_cast<void (*)(void *)>(dlsym(RTLD_DEFAULT, "mtrack_free"));
    release(records);
    EXPECT_EQ(standin_live_blocks(STANDIN_ALL_TYPES), 2U);

    ASSERT_EQ(dlclose(library), 0);
    ASSERT_EQ(dlopen(LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    EXPECT_EQ(standin_live_blocks(STANDIN_ALL_TYPES), 0U);
    EXPECT_EQ(standin_trees(), 0U);
  }
}

}  // namespace
