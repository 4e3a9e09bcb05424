// The readers of entity data: positional fields of a map file, turned into keys.
#pragma once

#include <memory>

#include "driver/token_scanner.h"
#include "levelfile/entity_keys.h"
#include "mapread/entity.h"

namespace k2k {

// One reader a type of entity. A read starts behind the type number and appends keys, "type" first.
class CEntityPair {
  public:
    virtual void Read(TokenScanner& scanner, CEntity& entity) = 0;
    virtual ~CEntityPair() = default;
    CEntityPair() = default;
    CEntityPair(const CEntityPair&) = delete;
    CEntityPair& operator=(const CEntityPair&) = delete;
};

class CEPairWorld : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

class CEPairStart : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

class CEPairLight : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

class CEPairModel : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

// A model with more skills, and with links to other objects.
class CEPairModelExt : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

class CEPairSound : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

class CEPairSun : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

class CEPairPath : public CEntityPair {
  public:
    void Read(TokenScanner& scanner, CEntity& entity) override;
};

// The reader of a type number; null for a number without one. Numbers are those of EntityType; "extended" differs by
// dialect and is not known here.
std::unique_ptr<CEntityPair> MakeEntityPair(int32_t type);

}  // namespace k2k
