// The engine's result-code exception type, nested in an empty base class.
#pragma once

class RkBase {
  public:
    RkBase() = default;
    ~RkBase() = default;

    // Result-code exception; entry points treat it as memory exhaustion.
    class RKRC {
      public:
        RKRC() = default;
        ~RKRC() = default;
    };
};
