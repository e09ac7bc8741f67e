#pragma once

// Plans written for the tests from the formats' public descriptions.

#include <pugixml.hpp>

#include <sstream>
#include <string>

namespace qvtest
{

inline std::string Xml(const pugi::xml_node& node)
{
    std::ostringstream s;
    node.print(s, "", pugi::format_raw);
    return s.str();
}

// The assignment of `resource` to `task` in a project XML plan, or an empty node.
inline pugi::xml_node Assignment(const pugi::xml_document& plan, int task, int resource)
{
    for (pugi::xml_node a : plan.child("Project").child("Assignments").children("Assignment"))
        if (a.child("TaskUID").text().as_int() == task && a.child("ResourceUID").text().as_int() == resource)
            return a;
    return pugi::xml_node();
}

// MspdiPlan() without the task of `uid`.
inline std::string WithoutTask(std::string plan, int uid)
{
    const size_t from = plan.find("<Task><UID>" + std::to_string(uid) + "</UID>");
    plan.erase(from, plan.find("</Task>", from) + 7 - from);
    return plan;
}

// A project XML plan: the project summary task, a blank row, a three-deep outline, two
// real resources and the "unassigned" resource 0; Pat Example (UID 1) is assigned to
// "Mockups" only. Non-Latin-1 names on purpose.
inline std::string MspdiPlan(const std::string& mockupsName = "Mockups \xCE\x9E\xCE\xA9",
                             bool withApi = true, const std::string& apiOutline = "2.1.1")
{
    std::string plan =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<Project xmlns=\"http://schemas.microsoft.com/project\">\n"
        "  <!-- kept as it is -->\n"
        "  <SaveVersion>14</SaveVersion>\n"
        "  <Title>Website Relaunch</Title>\n"
        "  <CreationDate>2024-05-01T09:00:00</CreationDate>\n"
        "  <Tasks>\n"
        "    <Task><UID>0</UID><ID>0</ID><Name>Website Relaunch</Name><OutlineNumber>0</OutlineNumber>"
        "<OutlineLevel>0</OutlineLevel><Summary>1</Summary></Task>\n"
        "    <Task><UID>1</UID><ID>1</ID><Name>Design</Name><OutlineNumber>1</OutlineNumber>"
        "<OutlineLevel>1</OutlineLevel><Summary>1</Summary><Work>PT16H0M0S</Work></Task>\n"
        "    <Task><UID>2</UID><ID>2</ID><Name>" + mockupsName + "</Name><WBS>1.1</WBS>"
        "<OutlineNumber>1.1</OutlineNumber><OutlineLevel>2</OutlineLevel>"
        "<Start>2024-06-10T08:00:00</Start><Finish>2024-06-12T17:00:00</Finish>"
        "<Work>PT16H0M0S</Work><Cost>120000</Cost></Task>\n"
        "    <Task><UID>3</UID><ID>3</ID><IsNull>1</IsNull></Task>\n"
        "    <Task><UID>4</UID><ID>4</ID><Name>Build</Name><OutlineNumber>2</OutlineNumber>"
        "<OutlineLevel>1</OutlineLevel><Summary>1</Summary></Task>\n"
        "    <Task><UID>5</UID><ID>5</ID><Name>Backend</Name><OutlineNumber>2.1</OutlineNumber>"
        "<OutlineLevel>2</OutlineLevel><Summary>1</Summary></Task>\n";
    if (withApi)
        plan += "    <Task><UID>6</UID><ID>6</ID><Name>API</Name><OutlineNumber>" + apiOutline +
                "</OutlineNumber><OutlineLevel>3</OutlineLevel><Start>2024-06-11T08:00:00</Start>"
                "<Finish>2024-06-14T17:00:00</Finish><Work>PT24H30M0S</Work><Cost>50000</Cost></Task>\n";
    plan +=
        "  </Tasks>\n"
        "  <Resources>\n"
        "    <Resource><UID>0</UID><ID>0</ID><Type>1</Type></Resource>\n"
        "    <Resource><UID>1</UID><ID>1</ID><Name>Pat Example</Name><Type>1</Type></Resource>\n"
        "    <Resource><UID>2</UID><ID>2</ID><Name>Lee \xE6\x9D\x8E</Name><Type>1</Type></Resource>\n"
        "  </Resources>\n"
        "  <Assignments>\n"
        "    <Assignment><UID>1</UID><TaskUID>2</TaskUID><ResourceUID>1</ResourceUID>"
        "<Finish>2024-06-12T17:00:00</Finish><Units>1</Units><Work>PT16H0M0S</Work><Cost>120000</Cost>"
        "</Assignment>\n"
        "    <Assignment><UID>2</UID><TaskUID>6</TaskUID><ResourceUID>2</ResourceUID>"
        "<Units>1</Units><Work>PT24H30M0S</Work></Assignment>\n"
        "  </Assignments>\n"
        "</Project>\n";
    return plan;
}

} // namespace qvtest
