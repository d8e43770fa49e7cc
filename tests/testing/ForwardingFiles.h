// A wrapper that passes every file statement on and writes the openings and listings into a list
// that it shares with whoever else records there, so that their order can be told.
#pragma once

#include <vector>

#include "platform/Files.h"

namespace nomira::testing {

class ForwardingFiles : public Files {
  public:
    // Entries are as u"input C:\\x.txt", u"output C:\\x.txt", u"dir C:\\R1\\*.SRC".
    ForwardingFiles(Files& inner, std::vector<Text>& happened)
        : m_inner(inner), m_happened(happened) {}

    std::unique_ptr<InputFile> OpenForInput(TextView sPath) override {
        Note(u"input ", sPath);
        return m_inner.OpenForInput(sPath);
    }
    std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) override {
        Note(u"output ", sPath);
        return m_inner.OpenForOutput(sPath);
    }
    std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes) override {
        Note(u"dir ", sPath);
        return m_inner.Dir(sPath, nAttributes);
    }
    std::uint16_t GetAttr(TextView sPath) override { return m_inner.GetAttr(sPath); }
    void SetAttr(TextView sPath, std::uint16_t nAttributes) override {
        m_inner.SetAttr(sPath, nAttributes);
    }
    void MkDir(TextView sPath) override { m_inner.MkDir(sPath); }
    void RmDir(TextView sPath) override { m_inner.RmDir(sPath); }
    void Kill(TextView sPath) override { m_inner.Kill(sPath); }
    void Name(TextView sOldPath, TextView sNewPath) override { m_inner.Name(sOldPath, sNewPath); }
    std::vector<Text> Drives() override { return m_inner.Drives(); }

  private:
    void Note(TextView sWhat, TextView sPath) { m_happened.push_back(Text(sWhat).append(sPath)); }
    Files& m_inner;
    std::vector<Text>& m_happened;
};

}  // namespace nomira::testing
