#pragma once

#include <string>
#include <vector>

namespace velaro::cli {

// Each returns the process exit code: 0 done, 2 usage error.
int runInfo(const std::vector<std::string>& args);
int runRender(const std::vector<std::string>& args);
int runPlay(const std::vector<std::string>& args);
int runMp3Info(const std::vector<std::string>& args);
int runTag(const std::vector<std::string>& args);
int runId3(const std::vector<std::string>& args);
int runEncode(const std::vector<std::string>& args);
int runNormalize(const std::vector<std::string>& args);
int runRecord(const std::vector<std::string>& args);
int runCalibrate(const std::vector<std::string>& args);
int runFx(const std::vector<std::string>& args);
int runCd(const std::vector<std::string>& args);
int runPlaylist(const std::vector<std::string>& args);
int runBacking(const std::vector<std::string>& args);
// velaro play with an audio file rather than a song.
int runPlayBacking(const std::vector<std::string>& args);
bool isAudioBacking(const std::string& path);
int runLyrics(const std::vector<std::string>& args);
int runKaraoke(const std::vector<std::string>& args);

}  // namespace velaro::cli
