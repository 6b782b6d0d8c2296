#include "archive/al_toolkit.h"

#include "archive/al_file.h"
#include "archive/al_memory.h"
#include "archive/al_pk_engine.h"

namespace fennick {

std::unique_ptr<ALStorage> ALToolKit::CreateStorageObject(const std::string& name, ALStorageType type) const {
  for (const StorageMaker& maker : storages_) {
    if (type == AL_UNDEFINED || type == maker.type) return maker.make(name);
  }
  return nullptr;
}

std::unique_ptr<ALCompressor> ALToolKit::CreateCompressor(int number) const {
  for (const EngineMaker& maker : engines_) {
    if (number >= maker.firstNumber && number <= maker.lastNumber && maker.compressor) return maker.compressor();
  }
  return nullptr;
}

std::unique_ptr<ALDecompressor> ALToolKit::CreateDecompressor(int number) const {
  for (const EngineMaker& maker : engines_) {
    if (number >= maker.firstNumber && number <= maker.lastNumber && maker.decompressor) return maker.decompressor();
  }
  return nullptr;
}

ALToolKit ZipToolKit(int level, int windowBits, int memLevel) {
  ALToolKit kit;
  kit.Add(ALToolKit::StorageMaker{AL_MEMORY_OBJECT, [](const std::string& name) -> std::unique_ptr<ALStorage> {
                                    return std::make_unique<ALMemory>(name, std::span<uint8_t>{}, AL_IGNORE_CASE);
                                  }});
  kit.Add(ALToolKit::StorageMaker{AL_FILE_OBJECT, [](const std::string& name) -> std::unique_ptr<ALStorage> {
                                    return std::make_unique<ALFile>(name, kALDefaultBufferSize, AL_IGNORE_CASE);
                                  }});
  kit.Add(ALToolKit::EngineMaker{AL_TOOLKIT_STORED, AL_TOOLKIT_STORED,
                                 [] { return std::make_unique<ALCopyCompressor>(); },
                                 [] { return std::make_unique<ALCopyDecompressor>(); }});
  // Every deflate speed inflates alike; a compressor made here packs at the kit's level.
  kit.Add(ALToolKit::EngineMaker{AL_TOOLKIT_DEFLATE_NORMAL, AL_TOOLKIT_DEFLATE_SUPER_FAST,
                                 [=] { return std::make_unique<ALPkCompressor>(level, windowBits, memLevel); },
                                 [=] { return std::make_unique<ALPkDecompressor>(windowBits); }});
  return kit;
}

}  // namespace fennick
