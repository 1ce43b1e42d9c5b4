#include "tools/ldpdump/Capture.h"

#include "tools/ldpdump/LinkDecode.h"

namespace LdpDump {

namespace {
constexpr int snapLength = 262144;
constexpr int liveTimeoutMs = 200;
}  // namespace

std::unique_ptr<Capture> Capture::openFile(const std::string& path, const std::string& filter,
                                           std::string* error) {
  char errbuf[PCAP_ERRBUF_SIZE] = {};
  pcap_t* pcap = pcap_open_offline(path.c_str(), errbuf);
  if (!pcap) {
    const std::string text = errbuf;
    if (text.find("unknown file format") != std::string::npos ||
        text.find("bad dump file format") != std::string::npos) {
      *error = path + ": not a pcap or pcapng capture (" + text + ")";
    } else if (text.find("truncated") != std::string::npos) {
      *error = path + ": capture file cut short (" + text + ")";
    } else if (text.rfind(path + ": ", 0) == 0) {
      *error = "cannot read " + text;  // libpcap named the file: "<path>: <system error>"
    } else {
      *error = "cannot read " + path + ": " + text;
    }
    return nullptr;
  }
  std::unique_ptr<Capture> c(new Capture(pcap, path));
  if (!c->prepare(filter, error)) return nullptr;
  return c;
}

std::unique_ptr<Capture> Capture::openLive(const std::string& iface, const std::string& filter,
                                           std::string* error) {
  char errbuf[PCAP_ERRBUF_SIZE] = {};
  pcap_t* pcap = pcap_create(iface.c_str(), errbuf);
  if (!pcap) {
    *error = iface + ": " + errbuf;
    return nullptr;
  }
  std::unique_ptr<Capture> c(new Capture(pcap, iface));
  pcap_set_snaplen(pcap, snapLength);
  pcap_set_promisc(pcap, 1);
  pcap_set_timeout(pcap, liveTimeoutMs);
  pcap_set_immediate_mode(pcap, 1);
  const int status = pcap_activate(pcap);
  if (status < 0) {
    switch (status) {
      case PCAP_ERROR_PERM_DENIED:
      case PCAP_ERROR_PROMISC_PERM_DENIED:
        *error = iface + ": permission denied: live capture needs root or CAP_NET_RAW (" +
                 pcap_geterr(pcap) + ")";
        break;
      case PCAP_ERROR_NO_SUCH_DEVICE:
        *error = iface + ": no such interface";
        break;
      case PCAP_ERROR_IFACE_NOT_UP:
        *error = iface + ": the interface is not up";
        break;
      default:
        *error = iface + ": " + pcap_statustostr(status) + " (" + pcap_geterr(pcap) + ")";
    }
    return nullptr;
  }
  if (!c->prepare(filter, error)) return nullptr;
  return c;
}

Capture::~Capture() { pcap_close(pcap_); }

bool Capture::prepare(const std::string& filter, std::string* error) {
  linkType_ = pcap_datalink(pcap_);
  if (!linkTypeSupported(linkType_)) {
    const char* name = pcap_datalink_val_to_name(linkType_);
    *error = name_ + ": link type " + std::to_string(linkType_) + " (" + (name ? name : "unnamed") +
             ") is not supported; ldpdump reads Ethernet, Linux cooked capture v1 and v2, raw IP "
             "and BSD loopback";
    return false;
  }
  if (filter.empty()) return true;
  bpf_program program;
  if (pcap_compile(pcap_, &program, filter.c_str(), 1, PCAP_NETMASK_UNKNOWN) != 0) {
    *error = "bad filter '" + filter + "': " + pcap_geterr(pcap_);
    return false;
  }
  const int set = pcap_setfilter(pcap_, &program);
  pcap_freecode(&program);
  if (set != 0) {
    *error = "cannot set filter '" + filter + "': " + pcap_geterr(pcap_);
    return false;
  }
  return true;
}

Capture::Next Capture::next(const pcap_pkthdr** header, const uint8_t** data) {
  pcap_pkthdr* h = nullptr;
  const u_char* d = nullptr;
  switch (pcap_next_ex(pcap_, &h, &d)) {
    case 1:
      *header = h;
      *data = d;
      return Next::frame;
    case 0:
      return Next::timeout;
    case PCAP_ERROR_BREAK:
      return Next::end;  // a file's end, or pcap_breakloop()
    default:
      return Next::error;
  }
}

}  // namespace LdpDump
