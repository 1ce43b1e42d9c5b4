#pragma once
// Frames from libpcap: a capture file (pcap or pcapng, "-" for standard input) or
// a live interface. Opening fails with a message fit for the user; so does a
// read that fails (a file cut off inside a record).

#include <pcap/pcap.h>

#include <cstdint>
#include <memory>
#include <string>

namespace LdpDump {

class Capture {
 public:
  enum class Next { frame, timeout, end, error };

  // Null on failure, with `error` set. A non-empty `filter` is applied (BPF).
  static std::unique_ptr<Capture> openFile(const std::string& path, const std::string& filter,
                                           std::string* error);
  static std::unique_ptr<Capture> openLive(const std::string& iface, const std::string& filter,
                                           std::string* error);
  ~Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

  int linkType() const { return linkType_; }
  // The next frame (valid until the next call); timeout only for live captures.
  Next next(const pcap_pkthdr** header, const uint8_t** data);
  // The text of the last error.
  std::string error() const { return pcap_geterr(pcap_); }
  // Makes next() return end; safe to call from a signal handler.
  void interrupt() { pcap_breakloop(pcap_); }

 private:
  Capture(pcap_t* pcap, const std::string& name) : pcap_(pcap), name_(name) {}
  // Checks the link type and applies the filter; false with `error` set.
  bool prepare(const std::string& filter, std::string* error);

  pcap_t* pcap_;
  std::string name_;
  int linkType_ = -1;
};

}  // namespace LdpDump
