#include "Desktop/ImageIO/StandardColour.h"

#include <array>
#include <utility>

namespace quillmere {
namespace {

VipsImageRef bands(VipsImage* image, int first, int count) {
    return vipsResult(
        [&](VipsImage** out) { return vips_extract_band(image, out, first, "n", count, nullptr); });
}

VipsImageRef readAs(VipsImage* image, VipsInterpretation interpretation) {
    return vipsResult([&](VipsImage** out) {
        return vips_copy(image, out, "interpretation", interpretation, nullptr);
    });
}

VipsImageRef throughProfile(VipsImage* image, bool embedded, const char* otherwise) {
    return vipsResult([&](VipsImage** out) {
        return vips_icc_transform(image, out, "srgb", "embedded", gboolean{embedded},
                                  "input_profile", otherwise, "intent", VIPS_INTENT_RELATIVE,
                                  "black_point_compensation", TRUE, nullptr);
    });
}

bool isFloating(const VipsImage* image) {
    return image->BandFmt == VIPS_FORMAT_FLOAT || image->BandFmt == VIPS_FORMAT_DOUBLE;
}

VipsImageRef greyAsThreeBands(VipsImage* grey) {
    std::array<VipsImage*, 3> same = {grey, grey, grey};
    return vipsResult([&](VipsImage** out) { return vips_bandjoin(same.data(), out, 3, nullptr); });
}

VipsImageRef withoutProfile(VipsImageRef colour) {
    if (isFloating(colour.get()) && colour->Bands == 1) colour = greyAsThreeBands(colour.get());
    if (!colour) return nullptr;
    VipsInterpretation meaning = vips_image_guess_interpretation(colour.get());
    if (meaning == VIPS_INTERPRETATION_MULTIBAND || isFloating(colour.get())) {
        if (meaning != VIPS_INTERPRETATION_LAB) {
            meaning =
                isFloating(colour.get()) ? VIPS_INTERPRETATION_scRGB : VIPS_INTERPRETATION_sRGB;
        }
    }
    colour = readAs(colour.get(), meaning);
    if (!colour) return nullptr;
    return vipsResult([&](VipsImage** out) {
        return vips_colourspace(colour.get(), out, VIPS_INTERPRETATION_sRGB, nullptr);
    });
}

VipsImageRef colourToStandard(VipsImageRef colour) {
    const bool isCMYK = colour->Type == VIPS_INTERPRETATION_CMYK;
    if (vips_image_get_typeof(colour.get(), VIPS_META_ICC_NAME) != 0) {
        // A profile for other colours than the file's own is as good as none.
        const char* otherwise = isCMYK ? "cmyk" : colour->Bands == 3 ? "srgb" : nullptr;
        if (VipsImageRef done = throughProfile(colour.get(), true, otherwise)) return done;
        vips_error_clear();
    }
    if (isCMYK) return throughProfile(colour.get(), false, "cmyk");
    return withoutProfile(std::move(colour));
}

VipsImageRef alphaToBytes(VipsImageRef alpha) {
    if (isFloating(alpha.get())) {
        alpha = vipsResult(
            [&](VipsImage** out) { return vips_linear1(alpha.get(), out, 255, 0.5, nullptr); });
        if (!alpha) return nullptr;
    }
    const gboolean shift = alpha->BandFmt == VIPS_FORMAT_USHORT;
    return vipsResult([&](VipsImage** out) {
        return vips_cast_uchar(alpha.get(), out, "shift", shift, nullptr);
    });
}

}  // namespace

VipsImageRef toStandardColour(VipsImageRef image) {
    if (image->Coding == VIPS_CODING_LABQ) {  // how 8-bit Lab is handed out
        image =
            vipsResult([&](VipsImage** out) { return vips_LabQ2Lab(image.get(), out, nullptr); });
        if (!image) return nullptr;
    }
    const int colours = image->Type == VIPS_INTERPRETATION_CMYK ? 4 : image->Bands < 3 ? 1 : 3;
    if (image->Bands < colours) return nullptr;
    VipsImageRef colour = bands(image.get(), 0, colours);
    if (colour) colour = colourToStandard(std::move(colour));
    if (!colour) return nullptr;
    colour =
        vipsResult([&](VipsImage** out) { return vips_cast_uchar(colour.get(), out, nullptr); });
    if (!colour || colour->Bands != 3 || image->Bands != colours + 1) return colour;
    VipsImageRef alpha = bands(image.get(), colours, 1);
    if (alpha) alpha = alphaToBytes(std::move(alpha));
    if (!alpha) return nullptr;
    return vipsResult(
        [&](VipsImage** out) { return vips_bandjoin2(colour.get(), alpha.get(), out, nullptr); });
}

}  // namespace quillmere
