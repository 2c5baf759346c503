#pragma once
// A modifier that changes the colour and transparency of every pixel by four
// animated values from -100 to 100: brightness, contrast, saturation and
// "Transparency" (which adds to the alpha). The parent renders the very
// section asked; the picture is then changed in place in 32-bit fixed point
// with 12 fractional bits.
//
// Renders may run on several threads at once: each works on the picture of
// its own caller under that picture's lock, and only reads the values, which
// are edited on the main thread.

#include "model/iParameter.h"
#include "objects/iInplaceModifier.h"
#include "objects/iLimitedValue.h"

#include <cstdint>

class EImageData;

// A value read as a whole number: halves are rounded away from 0, except that
// anything from -0.5 up to 0 is rounded down (-0.5 gives -1, 0 gives 0).
long RoundValue(double value);

// The four settings of a correction as whole numbers, -100 to 100 each.
struct hCorrectionSettings {
    long Brightness = 0;
    long Contrast = 0;
    long Saturation = 0;
    long Transparency = 0;

    bool IsNeutral() const {
        return Brightness == 0 && Contrast == 0 && Saturation == 0 && Transparency == 0;
    }
};

// Changes every pixel of the picture by the settings, step by step: the plain
// form that defines the bytes. Safe from any thread for pictures of its own.
void CorrectPixelsReference(EImageData& picture, const hCorrectionSettings& settings);
// The same bytes as CorrectPixelsReference, looked up in tables of every
// channel value for every sum of the three colours.
void CorrectPixels(EImageData& picture, const hCorrectionSettings& settings);

class imodCorrection : public iInplaceModifier {
public:
    explicit imodCorrection(std::string name);

    iFactoryProducer* GetProducer() const override { return &Producer; }
    // "Image correction".
    std::string GetStateText() const override;

    // The four values at the frame, each read by RoundValue.
    hCorrectionSettings GetSettings(long frame) const;

    iActiveValue& GetBrightnessValue() { return brightness; }
    iActiveValue& GetContrastValue() { return contrast; }
    iActiveValue& GetSaturationValue() { return saturation; }
    iActiveValue& GetTransparencyValue() { return transparency; }

    static iFactoryProducerOf<imodCorrection> Producer;
    static const iParameterTable<imodCorrection> Parameters;

protected:
    bool doProcessImageSize(iImageSizeResult&, long) override { return true; }
    bool doProcessImage(EImage& image, iRenderResult& result, iRenderRequest& request) override;

private:
    static const iParameterEntry<imodCorrection> parameterEntries[];

    iLimitedValue brightness;
    iLimitedValue contrast;
    iLimitedValue saturation;
    iLimitedValue transparency;
};
