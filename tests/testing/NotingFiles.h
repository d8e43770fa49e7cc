// A wrapper that passes every file statement on and writes the openings and listings into a list
// that it shares with whoever else records there, so that their order can be told.
#pragma once

#include <vector>

#include "platform/ForwardingFiles.h"

namespace nomira::testing {

class NotingFiles : public ForwardingFiles {
  public:
    // Entries are as u"input C:\\x.txt", u"output C:\\x.txt", u"dir C:\\R1\\*.SRC".
    NotingFiles(Files& inner, std::vector<Text>& happened)
        : ForwardingFiles(inner), m_happened(happened) {}

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override {
        Note(u"input ", sPath);
        return ForwardingFiles::OpenForInput(sPath);
    }
    std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) override {
        Note(u"output ", sPath);
        return ForwardingFiles::OpenForOutput(sPath);
    }
    std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes) override {
        Note(u"dir ", sPath);
        return ForwardingFiles::Dir(sPath, nAttributes);
    }

  private:
    void Note(TextView sWhat, TextView sPath) { m_happened.push_back(Text(sWhat).append(sPath)); }
    std::vector<Text>& m_happened;
};

}  // namespace nomira::testing
