// Property lists read and written, and Data compressed.
#include <sys/resource.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#if defined(QZ_BENCH_EXPAT)
#include <expat.h>
#endif

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSDate.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/NSData-QZFoundation.h"
#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/Files.h"
#include "bench/support/Records.h"

namespace qz::bench {
namespace {

using State = benchmark::State;
using Serialization = NSPropertyListSerialization;

template <class Work>
void repeat(State& state, Work work) {
  for (auto _ : state) {
    auto result = work();
    benchmark::DoNotOptimize(result);
  }
}

Ref<NSData> written(NSPropertyListFormat format) {
  return Serialization::dataFromPropertyList_format_errorDescription(records(), format, nullptr);
}

template <NSPropertyListFormat format>
void read(State& state) {
  const auto data = written(format);
  repeat(state, [&] {
    return Serialization::propertyListFromData_mutabilityOption_format_errorDescription(
        data, NSPropertyListImmutable, nullptr, nullptr);
  });
}

template <NSPropertyListFormat format>
void write(State& state) {
  records();
  repeat(state, [] { return written(format); });
}

void pugixmlTree(State& state) {
  const auto data = written(NSPropertyListXMLFormat);
  repeat(state, [&] {
    auto document = std::make_unique<pugi::xml_document>();
    document->load_buffer(data->bytes(), data->length());
    return document;
  });
}

#if defined(QZ_BENCH_EXPAT)
void expatTokens(State& state) {
  const auto data = written(NSPropertyListXMLFormat);
  repeat(state, [&] {
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(
        parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    const auto status = XML_Parse(parser, static_cast<const char*>(data->bytes()),
                                  static_cast<int>(data->length()), 1);
    XML_ParserFree(parser);
    return status;
  });
}
#endif

void pugixmlSave(State& state) {
  struct Writer : pugi::xml_writer {
    std::string out;
    void write(const void* data, std::size_t size) override {
      out.append(static_cast<const char*>(data), size);
    }
  };
  const auto data = written(NSPropertyListXMLFormat);
  pugi::xml_document document;
  document.load_buffer(data->bytes(), data->length());
  repeat(state, [&] {
    Writer writer;
    document.save(writer);
    return writer.out;
  });
}

// Binary, bare ------------------------------------------------------------------------------------

std::uint64_t bigEndian(const unsigned char* at, unsigned size) {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < size; ++i) value = value << 8 | at[i];
  return value;
}

// One allocation for each object, with its contents: no checks, no tables, no classes.
std::vector<void*> bareRead(std::string_view bytes) {
  const auto* const start = reinterpret_cast<const unsigned char*>(bytes.data());
  const unsigned char* const trailer = start + bytes.size() - 32;
  const unsigned offsetSize = trailer[6], referenceSize = trailer[7];
  const std::uint64_t count = bigEndian(trailer + 8, 8), table = bigEndian(trailer + 24, 8);
  std::vector<void*> objects(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    const unsigned char* at = start + bigEndian(start + table + i * offsetSize, offsetSize);
    const unsigned kind = *at >> 4;
    std::uint64_t length = *at++ & 15u;
    if (kind < 4) {
      const unsigned size = kind == 0 ? 0 : 1u << length;
      auto* const number = static_cast<std::uint64_t*>(std::malloc(24));
      number[1] = bigEndian(at, size);
      objects[i] = number;
      continue;
    }
    if (length == 15) {
      const unsigned size = 1u << (*at++ & 15u);
      length = bigEndian(at, size);
      at += size;
    }
    if (kind >= 10) {
      const std::uint64_t references = kind == 13 ? 2 * length : length;
      auto* const list = static_cast<std::uint64_t*>(std::malloc(16 + 8 * references));
      for (std::uint64_t j = 0; j < references; ++j)
        list[2 + j] = bigEndian(at + j * referenceSize, referenceSize);
      objects[i] = list;
    } else {
      const std::uint64_t size = kind == 6 ? 2 * length : length;
      auto* const text = static_cast<char*>(std::malloc(16 + size));
      std::memcpy(text + 16, at, size);
      objects[i] = text;
    }
  }
  return objects;
}

void bareReads(State& state) {
  const auto data = written(NSPropertyListBinaryFormat);
  repeat(state, [&] {
    const std::vector<void*> objects = bareRead(data->view());
    for (void* each : objects) std::free(each);
    return objects.size();
  });
}

// The same tree in plain C++.
struct Node {
  char kind;  // s, n, a, d
  std::uint64_t bits = 0;
  std::string text;
  std::vector<Node> children;  // of a d: all keys, then all values
};

Node nodeOf(NSObject* object) {
  if (auto* array = as<NSArray>(object)) {
    Node node{'a', 0, {}, {}};
    for (NSObject* each : *array) node.children.push_back(nodeOf(each));
    return node;
  }
  if (auto* dictionary = as<NSDictionary>(object)) {
    Node node{'d', 0, {}, {}};
    for (const auto& [key, value] : dictionary) node.children.push_back(nodeOf(key));
    for (const auto& [key, value] : dictionary) node.children.push_back(nodeOf(value));
    return node;
  }
  if (auto* number = as<NSNumber>(object)) return {'n', number->bits(), {}, {}};
  if (auto* date = as<NSDate>(object))
    return {'n', std::bit_cast<std::uint64_t>(date->timeIntervalSince1970()), {}, {}};
  if (auto* data = as<NSData>(object)) return {'s', 0, std::string(data->view()), {}};
  return {'s', 0, to_string(object), {}};
}

class BareWriter {
 public:
  explicit BareWriter(std::size_t expected) : slots_(expected * 2) {}

  std::uint32_t number(const Node& node) {
    if (node.kind == 's' || node.kind == 'n') return leaf(node);
    const auto mine = next_++;
    std::vector<std::uint32_t> references;
    references.reserve(node.children.size());
    for (const Node& child : node.children) references.push_back(number(child));
    offsets_.push_back(out_.size());
    out_ += node.kind;
    for (std::uint32_t each : references) append(each, 4);
    return mine;
  }

  std::string finish() {
    for (std::size_t offset : offsets_) append(offset, 4);
    return std::move(out_);
  }

 private:
  struct Slot {
    const Node* node = nullptr;
    std::uint32_t number = 0;
  };

  std::uint32_t leaf(const Node& node) {
    const std::size_t hash = node.kind == 'n' ? node.bits * 0x9E3779B97F4A7C15u
                                              : std::hash<std::string_view>()(node.text);
    std::size_t place = (hash ^ hash >> 32) % slots_.size();
    for (; slots_[place].node != nullptr; place = (place + 1) % slots_.size()) {
      const Node& known = *slots_[place].node;
      if (known.kind == node.kind && known.bits == node.bits && known.text == node.text)
        return slots_[place].number;
    }
    slots_[place] = {&node, next_};
    offsets_.push_back(out_.size());
    out_ += node.kind;
    if (node.kind == 'n')
      append(node.bits, 8);
    else
      out_ += node.text;
    return next_++;
  }

  void append(std::uint64_t value, unsigned size) {
    char bytes[8];
    for (unsigned i = 0; i < size; ++i) bytes[i] = static_cast<char>(value >> 8 * (size - 1 - i));
    out_.append(bytes, size);
  }

  std::vector<Slot> slots_;
  std::vector<std::size_t> offsets_;
  std::uint32_t next_ = 0;
  std::string out_;
};

void bareWrites(State& state) {
  const Node root = nodeOf(records());
  repeat(state, [&] {
    BareWriter writer(1 << 17);
    writer.number(root);
    return writer.finish();
  });
}

// Compression -------------------------------------------------------------------------------------

void compressing(State& state) {
  const auto data = written(NSPropertyListXMLFormat);
  repeat(state, [&] { return compressedData(data); });
}

void compressingPlain(State& state) {
  const auto data = written(NSPropertyListXMLFormat);
  repeat(state, [&] {
    std::vector<Bytef> out(compressBound(data->length()));
    uLongf length = out.size();
    compress(out.data(), &length, static_cast<const Bytef*>(data->bytes()), data->length());
    return length;
  });
}

std::string gzipPath() { return "/tmp/qzbench-" + std::to_string(::getpid()) + ".gz"; }

void gzipFile(State& state) {
  const auto data = written(NSPropertyListXMLFormat);
  const auto path = NSString::stringWithUTF8String(gzipPath());
  repeat(state, [&] { return writeToGzipFile(data, path); });
  ::unlink(gzipPath().c_str());
}

void gzipFilePlain(State& state) {
  const auto data = written(NSPropertyListXMLFormat);
  const std::string path = gzipPath();
  repeat(state, [&] {
    gzFile file = gzopen(path.c_str(), "wb");
    gzwrite(file, data->bytes(), data->length());
    return gzclose(file);
  });
  ::unlink(path.c_str());
}

// gzip(1) at zlib's usual level. As the other sides it is charged with processor time: the child's,
// from its start.
double secondsOfChildren() {
  ::rusage used{};
  ::getrusage(RUSAGE_CHILDREN, &used);
  const auto seconds = [](const ::timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

void gzipProgram(State& state, const char* toWhere) {
  const std::string path = place().at("records");
  const auto data = written(NSPropertyListXMLFormat);
  std::ofstream(path, std::ios::binary) << data->view();
  for (auto _ : state) {
    const double before = secondsOfChildren();
    if (!runProgram({"gzip", "-6", toWhere, path})) state.SkipWithError("gzip failed");
    state.SetIterationTime(secondsOfChildren() - before);
  }
}

void compressingProgram(State& state) { gzipProgram(state, "--stdout"); }

void gzipFileProgram(State& state) { gzipProgram(state, "-fk"); }

}  // namespace

void comparePropertyLists() {
  constexpr auto xml = NSPropertyListXMLFormat;
  constexpr auto binary = NSPropertyListBinaryFormat;
#if defined(QZ_BENCH_EXPAT)
  compare("ListReadXml", {"read 5 MB of XML property list", "expat, tokens only", 0.6}, &read<xml>,
          &expatTokens);
  comparePeer("ListReadXml", "pugixml", &pugixmlTree);
#else
  compare("ListReadXml", {"read 5 MB of XML property list", "pugixml's tree alone", 0}, &read<xml>,
          &pugixmlTree);
#endif
  compare("ListReadBinary", {"read the same in binary", "bare walk, one block an object", 2.5},
          &read<binary>, &bareReads);
  compare("ListWriteXml", {"write it as XML", "pugixml save", 1.5}, &write<xml>, &pugixmlSave);
  compare("ListWriteBinary", {"write it in binary, equal values once", "bare hashing walk", 1.5},
          &write<binary>, &bareWrites);
  compare("Compress", {"compressedData, 5 MB", "zlib", 1.01}, &compressing, &compressingPlain);
  compare("GzipFile", {"writeToGzipFile, 5 MB", "zlib", 1.01}, &gzipFile, &gzipFilePlain);
  compareElapsedPeer("Compress", "gzip", &compressingProgram);
  compareElapsedPeer("GzipFile", "gzip", &gzipFileProgram);
}

}  // namespace qz::bench
