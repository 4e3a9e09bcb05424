// What the four data sets of a level have in common.
#pragma once

namespace k2k {

class CFileKLV;

class CStorable {
  public:
    virtual ~CStorable() = default;
    virtual void Read(CFileKLV& file) = 0;
    virtual void Write(CFileKLV& file) = 0;
    virtual void PrintStats() = 0;
    virtual void Clear() = 0;
};

}  // namespace k2k
