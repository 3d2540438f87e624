#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/NSNotificationCenter.h"
#include "platform/NSViewController.h"

/// The controller of the one window. Everything runs on the main thread. It owns no widget; each
/// operation is implemented in the folder that its heading names.
class ViewController : public NSViewController {
  public:
    // app/: start-up.
    void viewDidLoad() override;
    void setRepresentedObject(std::shared_ptr<NSObject> representedObject) override;
    std::span<const NSAction> actions() const override;

    // devices/: the camera list, and opening a camera.

    /// Lists the attached cameras and follows them from now on as they come and go.
    void RegisterHidEvent();
    void processAddDeviceEventWithNotification(const NSNotification& notification);
    void processRemoveDeviceEventWithNotification(const NSNotification& notification);
    void OnCbxDeviceChanged(const NSComboBox& sender);
    void OnBtnOpenCamera(const NSButton& sender);

    // pages/vendor/: the controls of the vendor extension unit.

    /// Rebuilds the list of the red gain (`list` 0) or the blue gain (any other): "10" down to "0",
    /// and on to "-10" when `min` is not 0. The caller chooses the item.
    void ChangeCtrlRange(std::int32_t list, std::int32_t min);
    /// Switches all seven style buttons off.
    void DisCheckAllStyle();
    /// Restores the vendor defaults, once confirmed, and loads both pages again.
    void OnBtnRestore(const NSButton& sender);

    // A value's slider and its list: each takes on the other's number and sends it.
    void OnSliderCompValue(const NSSlider& sender);
    void OnChooseCompValue(const NSPopUpButton& sender);
    void OnSliderRgain(const NSSlider& sender);
    void OnChooseRgain(const NSPopUpButton& sender);
    void OnSliderBgain(const NSSlider& sender);
    void OnSpinBgain(const NSPopUpButton& sender);
    void OnSliderDrc(const NSSlider& sender);
    void OnChooseDrc(const NSPopUpButton& sender);
    void OnSliderNR2D(const NSSlider& sender);
    void OnBtnNR2D(const NSPopUpButton& sender);
    void OnSliderNR3D(const NSSlider& sender);
    void OnBtnNR3D(const NSPopUpButton& sender);

    // A switch shows and sends the state that the click has given it; the streams ask first.
    void OnBtnCompSwitch(const NSButton& sender);
    void OnBtnH264Switch(const NSButton& sender);
    void OnBtnAudioSwitch(const NSButton& sender);
    void OnBtnFlipV(const NSButton& sender);
    void OnBtnFlipH(const NSButton& sender);

    // A picture style switches the others off and sends its number.
    void OnBtnStyleNormal(const NSButton& sender);
    void OnBtnStyleClarity(const NSButton& sender);
    void OnBtnStyleBright(const NSButton& sender);
    void OnBtnStylePC(const NSButton& sender);
    void OnBtnStyleClarityLed(const NSButton& sender);
    void OnBtnSytleFace(const NSButton& sender);
    void OnBtnStyleDefault(const NSButton& sender);

    // pages/uvc/: the standard UVC controls.

    /// Reads the processing unit's controls into `uvcCfg`.
    void ReadConfig_UVC();
    /// Shows `uvcCfg`, then reads and shows the camera terminal's controls.
    void InitUVCPage();

    // A slider shows its number beside it and sends it as the control's value.
    void OnSliderBright(const NSSlider& sender);
    void OnSliderContrast(const NSSlider& sender);
    void OnSliderHue(const NSSlider& sender);
    void OnSliderSaturation(const NSSlider& sender);
    void OnSliderSharpness(const NSSlider& sender);
    void OnSliderGama(const NSSlider& sender);
    void OnSliderWB(const NSSlider& sender);
    void OnSliderBackLight(const NSSlider& sender);
    void OnSliderGain(const NSSlider& sender);
    void OnSliderZoom(const NSSlider& sender);
    void OnSliderFocus(const NSSlider& sender);
    void OnSliderAutoExposure(const NSSlider& sender);
    void OnSliderPano(const NSSlider& sender);
    void OnSliderTile(const NSSlider& sender);

    // An automatic mode is sent, and takes its slider from the user or gives it back.
    void OnBtnAutoWB(const NSButton& sender);
    void OnBtnAutoFocus(const NSButton& sender);
    void OnBtnAutoExposure(const NSButton& sender);

    /// Gives every standard control that no automatic mode holds its default.
    void OnBtnUvcDefault(const NSButton& sender);
    // A power-line frequency is sent, and switches the other one off.
    void OnAntiFlicker60HZ(const NSButton& sender);
    void OnAntiFlicker50HZ(const NSButton& sender);

  private:
    /// The processing unit's values as the camera gave them last: little-endian 16-bit slots.
    std::array<std::uint8_t, 64> uvcCfg{};

  public:
    // The widgets, connected by the interface file before `viewDidLoad` runs.
    IBOutlet<NSComboBox> m_cbxDevice{this, "m_cbxDevice"};
    IBOutlet<NSTextField> m_lableVersion{this, "m_lableVersion"};
    IBOutlet<NSImageView> m_previewWnd{this, "m_previewWnd"};
    IBOutlet<NSButton> m_btnCompSwitch{this, "m_btnCompSwitch"};
    IBOutlet<NSSlider> m_SliderCompValue{this, "m_SliderCompValue"};
    IBOutlet<NSPopUpButton> m_SpinCompValue{this, "m_SpinCompValue"};
    IBOutlet<NSSlider> m_SliderRgain{this, "m_SliderRgain"};
    IBOutlet<NSPopUpButton> m_SpinRgain{this, "m_SpinRgain"};
    IBOutlet<NSSlider> m_btnBgain{this, "m_btnBgain"};
    IBOutlet<NSPopUpButton> m_SpinBgain{this, "m_SpinBgain"};
    IBOutlet<NSSlider> m_SliderDrc{this, "m_SliderDrc"};
    IBOutlet<NSPopUpButton> m_btnDrc{this, "m_btnDrc"};
    IBOutlet<NSSlider> m_SliderNR2D{this, "m_SliderNR2D"};
    IBOutlet<NSSlider> m_SliderNR3D{this, "m_SliderNR3D"};
    IBOutlet<NSPopUpButton> m_btnNR2D{this, "m_btnNR2D"};
    IBOutlet<NSPopUpButton> m_btnNR3D{this, "m_btnNR3D"};
    IBOutlet<NSButton> m_btnStyleNormal{this, "m_btnStyleNormal"};
    IBOutlet<NSButton> m_btnStyleClarity{this, "m_btnStyleClarity"};
    IBOutlet<NSButton> m_btnBright{this, "m_btnBright"};
    IBOutlet<NSButton> m_btnStylePC{this, "m_btnStylePC"};
    IBOutlet<NSButton> m_btnClarityLed{this, "m_btnClarityLed"};
    IBOutlet<NSButton> m_btnSytleFace{this, "m_btnSytleFace"};
    IBOutlet<NSButton> m_btnStyleDefault{this, "m_btnStyleDefault"};
    IBOutlet<NSButton> m_btnH264Switch{this, "m_btnH264Switch"};
    IBOutlet<NSButton> m_btnAudioSwitch{this, "m_btnAudioSwitch"};
    IBOutlet<NSButton> m_btnFlipV{this, "m_btnFlipV"};
    IBOutlet<NSButton> m_btnFlipH{this, "m_btnFlipH"};
    IBOutlet<NSSlider> m_sliderBright{this, "m_sliderBright"};
    IBOutlet<NSTextField> m_textBright{this, "m_textBright"};
    IBOutlet<NSSlider> m_sliderContrast{this, "m_sliderContrast"};
    IBOutlet<NSTextField> m_textContrast{this, "m_textContrast"};
    IBOutlet<NSSlider> m_sliderHue{this, "m_sliderHue"};
    IBOutlet<NSTextField> m_textHue{this, "m_textHue"};
    IBOutlet<NSSlider> m_sliderSaturation{this, "m_sliderSaturation"};
    IBOutlet<NSTextField> m_textSaturation{this, "m_textSaturation"};
    IBOutlet<NSSlider> m_sliderSharpness{this, "m_sliderSharpness"};
    IBOutlet<NSTextField> m_textSharpness{this, "m_textSharpness"};
    IBOutlet<NSSlider> m_sliderGama{this, "m_sliderGama"};
    IBOutlet<NSTextField> m_textGama{this, "m_textGama"};
    IBOutlet<NSSlider> m_sliderWB{this, "m_sliderWB"};
    IBOutlet<NSTextField> m_textWb{this, "m_textWb"};
    IBOutlet<NSButton> m_btnAutoWB{this, "m_btnAutoWB"};
    IBOutlet<NSSlider> m_sliderBackLight{this, "m_sliderBackLight"};
    IBOutlet<NSTextField> m_textBackLight{this, "m_textBackLight"};
    IBOutlet<NSSlider> m_sliderGain{this, "m_sliderGain"};
    IBOutlet<NSTextField> m_textGain{this, "m_textGain"};
    IBOutlet<NSSlider> m_sliderZoom{this, "m_sliderZoom"};
    IBOutlet<NSTextField> m_textZoom{this, "m_textZoom"};
    IBOutlet<NSSlider> m_sliderFocus{this, "m_sliderFocus"};
    IBOutlet<NSTextField> m_textFocus{this, "m_textFocus"};
    IBOutlet<NSButton> m_btnAutoFocus{this, "m_btnAutoFocus"};
    IBOutlet<NSSlider> m_sliderAutoExposure{this, "m_sliderAutoExposure"};
    IBOutlet<NSTextField> m_textExposure{this, "m_textExposure"};
    IBOutlet<NSButton> m_btnAutoExposure{this, "m_btnAutoExposure"};
    IBOutlet<NSSlider> m_sliderPano{this, "m_sliderPano"};
    IBOutlet<NSTextField> m_textPano{this, "m_textPano"};
    IBOutlet<NSSlider> m_sliderTile{this, "m_sliderTile"};
    IBOutlet<NSTextField> m_textTile{this, "m_textTile"};
    IBOutlet<NSButton> m_btn50HZ{this, "m_btn50HZ"};
    IBOutlet<NSButton> m_btn60HZ{this, "m_btn60HZ"};
};
