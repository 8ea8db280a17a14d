// How a song file keeps its lyrics, and the patch file that lets the
// synthesiser have every instrument ready.

#include "../base/byte_text.h"
#include "../base/paths.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../ui/dialogs.h"
#include "../shell/frm_main.h"

namespace velaro::song {

namespace {
const std::string kLyricEvent("\xFF\x05", 2);
const std::string kMLiveMark("\x00\x20\x24\x00", 4);
}  // namespace

void frmMain::CreateFileTemp() {
    tempPatchPath = RPP(tempFolder()) + "filetemp.tmp";
    // A format 0 file that only selects programs 0 to 127 on channel 1. The
    // track length field says 384 although 389 bytes follow; it stays so.
    static const uint8_t kHead[23] = {0x4D, 0x54, 0x68, 0x64, 0x00, 0x00, 0x00, 0x06,
                                      0x00, 0x00, 0x00, 0x01, 0x00, 0x60, 0x4D, 0x54,
                                      0x72, 0x6B, 0x00, 0x00, 0x01, 0x80, 0x00};
    size_t i = 0;
    for (uint8_t b : kHead) patchBuffer[i++] = b;
    for (int p = 0; p < 128; ++p) {
        patchBuffer[i++] = 0xC0;
        patchBuffer[i++] = static_cast<uint8_t>(p);
        patchBuffer[i++] = 0x01;
    }
    for (uint8_t b : {0x00, 0xFF, 0x2F, 0x00}) patchBuffer[i++] = b;
    writeWholeFile(tempPatchPath,
                   std::string_view(reinterpret_cast<const char*>(patchBuffer.data()), patchBuffer.size()));
}

void frmMain::SOLTON() {
    // No guard of its own: the first error ends it and the open command goes on.
    try {
        if (ucase(right(songPath(), 3)) != "MID") {
            skipConversion = true;
            return;
        }
        soltonBytes = readWholeFile(songPath());
        const int16_t format = static_cast<int16_t>(
            hexValue(hexByte(byteAt(soltonBytes, 9)) + hexByte(byteAt(soltonBytes, 10))));
        if (format == 1) {
            skipConversion = true;
            return;
        }
        // Twenty looks for lyric events whose text starts with "<". A search
        // that finds nothing reads byte 3 and starts again at the top; the
        // start is a 16-bit number, so a hit past 32766 overflows.
        int16_t start = 1;
        int hits = 0;
        for (int k = 0; k < 20; ++k) {
            int64_t found = FIND(start, soltonBytes, kLyricEvent);
            if (byteAt(soltonBytes, found + 3) == 60) ++hits;
            start = checked16(found + 1);
        }
        if (hits >= 7) {
            rt.dialogs.msgBox("Attenzione, il file è formato SOLTON", ui::vbOKOnly, "VELARO");
            skipConversion = true;
            return;
        }
        skipConversion = false;
        if (FIND(1, soltonBytes, kMLiveMark) > 0) {
            rt.dialogs.msgBox("Attenzione, il file è formato M-LIVE", ui::vbOKOnly, "VELARO");
            skipConversion = true;
        }
    } catch (const std::exception&) {
    }
}

void frmMain::senzatesto() {
    lyricRich = 0;
    int count = 0;
    int64_t start = 1;
    for (int k = 0; k < 30; ++k) {
        int64_t p = FIND(start, soltonBytes, kLyricEvent);
        if (p > 0) {
            ++count;
            start = p + 1;
        }
    }
    if (count >= 25) lyricRich = 1;
}

}  // namespace velaro::song

namespace velaro::song {

void frmMain::midkar() {
    // The converter writes the karaoke copy to a fixed path; it is given the
    // song's full short path, as the old converter wanted it.
    std::string shortPath;
    resumeNext([&] { shortPath = platform.files->ShortPath(platform.files->FullPath(songPath())); });
    int handle = -1;
    resumeNext([&] {
        handle = platform.processes->Start(RPP(programFolder()) + "velaro-tx", {shortPath, convertedPath});
    });
    const int answer = rt.dialogs.msgBox("MID to KARAOKE", ui::vbOKOnly, "VELARO DECK");
    if (answer != ui::vbNo) {
        rt.screenMousePointer = ui::kPointerHourglass;
        // Waiting for the converter to end replaces the old fixed delay.
        if (handle > 0) resumeNext([&] { platform.processes->Wait(handle); });
        rt.screenMousePointer = ui::kPointerDefault;
    }
}

}  // namespace velaro::song
