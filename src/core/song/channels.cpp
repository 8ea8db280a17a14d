// The mixer strip of the 16 MIDI channels: volume, mute and instrument per
// channel. Changes go to the performance as channel messages and are sent
// again at each start, so they survive a restart of the song.

#include "../base/vb_error.h"
#include "../shell/frm_main.h"

namespace velaro::song {

namespace {


// General MIDI order, in the program's own spelling, and row 128 for drums.
const char* const kInstruments[129] = {
    "Acoustic Grand", "Bright Acoustic", "Electric Grand", "Honky-Tonk", "Electric Piano 1", "Electric Piano 2",
    "Harpsichord", "Clavinet", "Celesta", "Glockenspiel", "Music Box", "Vibraphone", "Marimba", "Xylophone",
    "Tubular Bells", "Dulcimer", "Drawbar Organ", "Percussive Organ", "Rock Organ", "Church Organ", "Reed Organ",
    "Accordeon", "Harmonica", "Tango accordeon", "Nylon String Guitar", "Steel String Guitar",
    "Electric Jazz Guitar", "Electric Clean Guitar", "Electric Muted Guitar", "Overdriven Guitar",
    "Distortion Guitar", "Guitar Harmonics", "Acoustic Bass", "Electric Bass(finger)", "Electric Bass(pick)",
    "Fretless Bass", "Slap Bass 1", "Slap Bass 2", "Synth Bass 1", "Synth Bass 2", "Violin", "Viola", "Cello",
    "Contrabass", "Tremolo Strings", "Pizzicato Strings", "Orchestral Strings", "Timpani", "String Ensemble 1",
    "String Ensemble 2", "SynthStrings 1", "SynthStrings 2", "Choir Aahs", "Voice Oohs", "Synth Voice",
    "Orchestra Hit", "Trumpet", "Trombone", "Tuba", "Muted Trumpet", "French Horn", "Brass Section",
    "SynthBrass 1", "SynthBrass 2", "Soprano Sax", "Alto Sax", "Tenor Sax", "Baritone Sax", "Oboe",
    "English Horn", "Bassoon", "Clarinet", "Piccolo", "Flute", "Recorder", "Pan Flute", "Blown Bottle",
    "Skakuhachi", "Whistle", "Ocarina", "Lead 1 (square)", "Lead 2 (sawtooth)", "Lead 3 (calliope)",
    "Lead 4 (chiff)", "Lead 5 (charang)", "Lead 6 (voice)", "Lead 7 (fifths)", "Lead 8 (bass+lead)",
    "Pad 1 (new age)", "Pad 2 (warm)", "Pad 3 (polysynth)", "Pad 4 (choir)", "Pad 5 (bowed)",
    "Pad 6 (metallic)", "Pad 7 (halo)", "Pad 8 (sweep)", "FX 1 (rain)", "FX 2 (soundtrack)", "FX 3 (crystal)",
    "FX 4 (atmosphere)", "FX 5 (brightness)", "FX 6 (goblins)", "FX 7 (echoes)", "FX 8 (sci-fi)", "Sitar",
    "Banjo", "Shamisen", "Koto", "Kalimba", "Bagpipe", "Fiddle", "Shanai", "Tinkle Bell", "Agogo",
    "Steel Drums", "Woodblock", "Taiko Drum", "Melodic Tom", "Synth Drum", "Reverse Cymbal",
    "Guitar Fret Noise", "Breath Noise", "Seashore", "Bird Tweet", "Telephone Ring", "Helicopter", "Applause",
    "Gunshot", "Percussion",
};

// How long each of the two waits of SetChannels lasts while the segment starts.
constexpr int64_t kChannelWaitMs = 100;

}  // namespace

std::string frmMain::GetPatch(int16_t program) {
    if (program < 0 || program > 128) return {};
    return kInstruments[program];
}

void frmMain::LoadPatches() {
    if (List3.listCount() > 0) return;
    for (int p = 0; p < 128; ++p) List3.addItem(kInstruments[p]);
}

void frmMain::descrizionestrumenti(int program) {
    if (program < 0 || program > 128) return;
    std::string name = kInstruments[program];
    name.resize(12, ' ');  // a fixed field of twelve characters
    instrumentName = name;
}

void frmMain::SetChannels() {
    auto& perf = *platform.performance;
    rt.loop.sleep(kChannelWaitMs);
    for (int c = 0; c < 16; ++c) {
        const ChannelRow& row = channelTable[c];
        if (row.channelNo != -1 && row.patchChanged)
            resumeNext([&] { perf.SendPatchPMSG(0, 1, c, row.patch, 0, 0); });
    }
    rt.loop.sleep(kChannelWaitMs);
    for (int c = 0; c < 16; ++c) {
        const ChannelRow& row = channelTable[c];
        if (row.channelNo != -1 && row.volumeChanged)
            resumeNext([&] { perf.SendMIDIPMSG(0, 1, c, 176, 7, Slider2(c).value()); });
    }
}

void frmMain::Slider2_Change(int c) {
    const int v = Slider2(c).value();
    resumeNext([&] { descrizionestrumenti(channelTable[c].patch); });
    if (channelTable[c].channelNo == 10) instrumentName = drumsWord;
    resumeNext([&] { Label3(c).setCaption(instrumentName + " " + std::to_string(c + 1)); });
    if (deviceOpen) {
        resumeNext([&] { platform.performance->SendMIDIPMSG(0, 1, c, 176, 7, v); });
        channelTable[c].volumeChanged = -1;
    }
    resumeNext([&] { rt.loop.doEvents(); });
}

void frmMain::Check1_Click(int c) {
    if (Check1(c).value() == 0) {
        resumeNext([&] { Slider2(c).setValue(0); });
        resumeNext([&] { Slider2(c).setEnabled(false); });
    } else {
        resumeNext([&] { Slider2(c).setValue(channelTable[c].volume); });
        resumeNext([&] { Slider2(c).setEnabled(true); });
    }
    // The reverse of the slider's test: with a song open the slider's own
    // change event has sent the message already.
    if (!deviceOpen) {
        resumeNext([&] { platform.performance->SendMIDIPMSG(0, 1, c, 176, 7, Slider2(c).value()); });
        channelTable[c].volumeChanged = -1;
    }
}

void frmMain::Option1_Click(int c) {
    listClickCount = 0;
    if (!deviceOpen) return;
    instrumentCursorChannel = static_cast<int16_t>(c);
    List3.setVisible(true);
    const std::string name = GetPatch(channelTable[c].patch);
    for (int i = 0; i < List3.listCount(); ++i) {
        if (List3.list(i) == name) {
            resumeNext([&] { List3.setListIndex(i); });
            break;
        }
    }
}

void frmMain::List3_Click() {
    if (instrumentCursorChannel == 9) return;  // the drum channel keeps its kit
    const int ch = instrumentCursorChannel;
    const int program = List3.listIndex();
    resumeNext([&] { platform.performance->SendPatchPMSG(0, 0, ch, program, 0, 0); });
    resumeNext([&] { rt.loop.doEvents(); });
    channelTable[ch].patch = static_cast<int16_t>(program);
    channelTable[ch].patchChanged = -1;
    // The click that put the list on the channel counts as the first.
    ++listClickCount;
    if (listClickCount == 2) {
        listClickCount = 0;
        resumeNext([&] { Option1(ch).setValue(false); });
        resumeNext([&] { descrizionestrumenti(program); });
        resumeNext([&] { Label3(ch).setCaption(instrumentName + " " + std::to_string(ch + 1)); });
        List3.setVisible(false);
    }
}

void frmMain::Check2_Click() {
    if (loadingPatches) return;
    if (Check2.value() == 1) {
        rt.dialogs.msgBox("Program Change Enabled", ui::vbOKOnly, "VELARO DECK");
        programChangeOn = true;
    } else {
        rt.dialogs.msgBox("Program Change Disable", ui::vbOKOnly, "VELARO DECK");
        programChangeOn = false;
    }
}

}  // namespace velaro::song
