#pragma once

// The calls a host makes before discovery, in its order, for the tests and
// benchmarks that drive the controller in process rather than through the
// loaded library.

#include <QString>
#include <QStringList>

#include "host_context_records.h"

struct controller_setup
{
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info source;
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info general;
    QStringList tables;
    QString result_dir;
    QStringList metadata_keys;  // handed over only when there are some
};

template <typename controller_type>
void prepare_controller(controller_type& controller, const controller_setup& setup)
{
    controller.pub_set_engine_type(0);
    controller.pub_set_essentials();
    controller.pub_set_general_info(setup.general);
    controller.pub_set_source_count(1);
    controller.pub_set_source_info(setup.source);
    controller.pub_set_essential_for_quarl_desk_extraction(setup.tables, {});
    controller.pub_set_result_directory(setup.result_dir);
    controller.pub_create_db_tables();
    if (!setup.metadata_keys.isEmpty())
        controller.pub_set_extended_attributes_list(setup.metadata_keys);
}
