// What is measured, a section at a time.
#pragma once

#include <filesystem>
#include <string>

#include "Desktop/Application/ResourceBundle.h"

namespace quillmere::benchmark {

/// Where a section finds what it measures, and how long it may take.
struct Setting {
    ResourceBundle bundle;
    std::filesystem::path commandLine;  // the built quillmere-cli
    bool slow = false;                  // measure also what takes many minutes

    std::filesystem::path network(std::string_view resource) const {
        return *bundle.urlForResource(resource, "mlmodelc");
    }
};

/// The seven networks by their resources, from the quickest to the slowest.
inline constexpr const char* kNetworks[] = {
    "fast-srgan", "real256_anime_8", "real256_general_8", "aesrgan8_single",
    "bsrgan8",    "real8",           "MMRealSRGAN_8"};

/// Each prints its tables. What can't be measured (a network that was not fetched, say) gets a line
/// that says so, and the section goes on. Each runs in a process of its own, so that no section
/// finds memory, threads or caches as another left them.
void measureLayers(const Setting& setting);
void measureNetworks(const Setting& setting);
void measureLoading(const Setting& setting);
void measurePictures(const Setting& setting);
void measureEncoding(const Setting& setting);
void measureEvents(const Setting& setting);
void measureWarmUp(const Setting& setting);
void measureFidelity(const Setting& setting);
void measureScaler(const Setting& setting);
void measureScalerQuality(const Setting& setting);
void measureVideos(const Setting& setting);
void measureWindow(const Setting& setting);

}  // namespace quillmere::benchmark
