#include "greeter.h"
#include "zelm/components/components_repository.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/reflector.h"
#include <iostream>

using namespace Zelm;

struct Visit : MetaData::MirroredObject {  // reads and writes JSON without a line of code for it
    MetaData::Reflector<std::string, false, true> guest{this, "guest"};
    MetaData::Reflector<int, false, true> room{this, "room", 0};
};

int main()
{
    Visit visit;
    visit.copyFromMetaData(Json::jsonStringtoMetaData(R"({"guest": "Ada", "room": 12})"));

    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const component = repository->instantiateComponent("Greeter", "doorman", {"Good evening"});
    std::cout << std::dynamic_pointer_cast<Greeter>(component)->greet(visit.guest()) << std::endl;
    repository->releaseAllComponents();
}
