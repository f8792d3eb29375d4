#ifndef PLATFORM_FOUNDATION_OBX_OBJECT_H
#define PLATFORM_FOUNDATION_OBX_OBJECT_H

// The root of the object model. It holds nothing; classes inherit it virtually, so that an object
// has one root however many branches of the model it joins.
class Obx_Object {
  public:
    virtual ~Obx_Object() = default;
};

#endif
