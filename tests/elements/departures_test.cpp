// What single classes make of what they read: XML in, XML out.

#include "support/element_xml.h"

#include <odfmodel/core/reflection.h>

#include <gtest/gtest.h>

#include <cctype>

namespace {

struct Row {
    const char *in, *out; ///< a null `out` stands for the same again
};

constexpr const char* kSame = nullptr;

// Document shell, metadata, settings.
constexpr Row kOffice[] = {
    {R"(<office:document-content office:version="1.2"/>)", kSame},
    {"<office:document-content/>", kSame},
    {"<office:document/>", R"(<office:document office:mimetype=""/>)"},
    {"<office:body><office:database><text:p/></office:database></office:body>", "<office:body/>"},
    {R"(<office:script script:language="L">code</office:script>)", R"(<office:script script:language="L"/>)"},
    {"<office:binary-data>QUJD<!-- -->\nREVG&#61;</office:binary-data>",
     "<office:binary-data>QUJD\nREVG=</office:binary-data>"},
    {R"(<script:event-listener script:event-name="e" script:language="l" xlink:href="h"/>)",
     R"(<script:event-listener script:event-name="e" script:language="l" script:macro-name="" xlink:href="h"/>)"},
    {R"(<draw:page draw:master-page-name="m"><office:annotation/><officeooo:annotation><text:p>a</text:p></officeooo:annotation></draw:page>)",
     R"(<draw:page draw:master-page-name="m"><officeooo:annotation><text:p>a</text:p></officeooo:annotation></draw:page>)"},
    {"<text:p><officeooo:annotation/><office:annotation/></text:p>", "<text:p><office:annotation/></text:p>"},
    {R"(<office:annotation-end office:name="n"/>)", kSame},
    {R"(<office:annotation draw:caption-id="c" office:display="true"/>)",
     R"(<office:annotation office:display="1"/>)"},
    {R"(<office:forms form:apply-design-mode="true"/>)", R"(<office:forms form:apply-design-mode="1"/>)"},
    {R"(<office:dde-source office:name="n"/>)",
     R"(<office:dde-source office:name="n" office:dde-application="" office:dde-topic="" office:dde-item=""/>)"},
    {R"(<office:spreadsheet table:protection-key="k" table:protection-key-digest-algorithm="a"/>)",
     R"(<office:spreadsheet table:protection-key="k"/>)"},
    {"<office:meta><dc:date>2013-05-07T10:11:12.5</dc:date><meta:creation-date>no "
     "date</meta:creation-date></office:meta>",
     "<office:meta><dc:date>2013-05-07T10:11:12.005</dc:date>"
     "<meta:creation-date>0000-00-00T00:00:00.000</meta:creation-date></office:meta>"},
    {"<office:meta><dc:date/></office:meta>",
     "<office:meta><dc:date>0000-00-00T00:00:00.000</dc:date></office:meta>"},
    {"<meta:print-date>garbage</meta:print-date>", kSame},
    {"<office:meta><meta:keyword>a</meta:keyword><meta:editing-cycles>007</meta:editing-cycles>"
     "<meta:keyword>b</meta:keyword></office:meta>",
     kSame},
    {R"(<meta:document-statistic meta:page-count="3" meta:frame-count="9" sentence-count="2" frame-count="-2"/>)",
     R"(<meta:document-statistic meta:page-count="3" sentence-count="2"/>)"},
    {R"(<meta:document-statistic meta:page-count="-1" meta:row-count="0"/>)",
     R"(<meta:document-statistic meta:page-count="4294967295" meta:row-count="0"/>)"},
    {R"(<meta:user-defined meta:name="n"/>)",
     R"(<meta:user-defined meta:name="n" meta:value-type="float"/>)"},
    {R"(<meta:user-defined meta:value-type="percentage">1</meta:user-defined>)",
     R"(<meta:user-defined meta:name="" meta:value-type="float">1</meta:user-defined>)"},
    {R"(<meta:hyperlink-behaviour xlink:show="none"/>)", R"(<meta:hyperlink-behaviour xlink:show="new"/>)"},
    {R"(<meta:auto-reload xlink:show="none"/>)", kSame},
    {"<meta:template>text</meta:template>", R"(<meta:template xlink:href=""/>)"},
    {R"(<config:config-item config:name="n" config:type="boolean">True </config:config-item>)", kSame},
    {"<config:config-item>x</config:config-item>",
     R"(<config:config-item config:name="" config:type="boolean">x</config:config-item>)"},
    {"<config:config-item-map-indexed><config:config-item-map-entry/><config:config-item/></"
     "config:config-item-map-indexed>",
     R"(<config:config-item-map-indexed config:name=""><config:config-item-map-entry/></config:config-item-map-indexed>)"},
    {R"(<config:config-item-set config:name="a"><config:config-item-set config:name="b"/><config:config-item config:name="c" config:type="int">1</config:config-item></config:config-item-set>)",
     kSame},
};

// Text.
constexpr Row kText[] = {
    {"<text:p/>", kSame},
    {"<text:p>a<text:s text:c=\"2\"/>b<text:span>c</text:span>d</text:p>", kSame},
    {R"(<text:a xlink:href="h">x<text:span>y</text:span>z</text:a>)",
     R"(<text:a xlink:href="h">xz<text:span>y</text:span></text:a>)"},
    {"<text:ruby-base>x<text:s/>z</text:ruby-base>", "<text:ruby-base>xz<text:s/></text:ruby-base>"},
    {"<text:h>x</text:h>", R"(<text:h text:outline-level="0">x</text:h>)"},
    {R"(<text:h text:is-list-header="true" text:outline-level="2"/>)",
     R"(<text:h text:outline-level="2" text:is-list-header="1"/>)"},
    {"<text:p>a<text:foo>b</text:foo>c</text:p>", "<text:p>ac</text:p>"},
    {"<text:bookmark/>", R"(<text:bookmark text:name=""/>)"},
    {"<text:s/>", kSame},
    {R"(<text:list text:continue-numbering="true"><text:list-item><text:number>1.</text:number><text:p/><text:list><text:list-item><table:table/></text:list-item></text:list></text:list-item></text:list>)",
     R"(<text:list text:continue-numbering="1"><text:list-item><text:number>1.</text:number><text:p/><text:list><text:list-item/></text:list></text:list-item></text:list>)"},
    {"<text:section><text:section-source/><office:dde-source office:dde-application=\"\" "
     "office:dde-topic=\"\" office:dde-item=\"\"/></text:section>",
     "<text:section text:name=\"\" text:display=\"true\" text:condition=\"\"><text:section-source/>"
     "<office:dde-source office:dde-application=\"\" office:dde-topic=\"\" "
     "office:dde-item=\"\"/></text:section>"},
    {R"(<text:note><text:note-citation text:label="*">*</text:note-citation><text:note-body><text:p/></text:note-body></text:note>)",
     R"(<text:note text:note-class="footnote"><text:note-citation text:label="*">*</text:note-citation><text:note-body><text:p/></text:note-body></text:note>)"},
    {"<text:numbered-paragraph/>", kSame},
    {R"(<text:date text:date-value="2013-05-07">May 7</text:date>)", kSame},
    {R"(<text:bookmark-ref text:ref-name="b" text:reference-format="number">see above</text:bookmark-ref>)",
     R"(<text:bookmark-ref text:ref-name="b" text:reference-format="page"/>)"},
    {"<text:note-ref/>", R"(<text:note-ref text:note-class="footnote"/>)"},
    {R"(<text:variable-set text:name="v" office:value-type="string" office:string-value="x">x</text:variable-set>)",
     R"(<text:variable-set text:name="v" office:value-type="string" office:value="0" office:date-value="" office:time-value="" office:boolean-value="0" office:string-value="x">x</text:variable-set>)"},
    {R"(<text:expression office:value="1.50">1,5</text:expression>)",
     R"(<text:expression office:value="1.5">1,5</text:expression>)"},
    {R"(<text:page-count style:num-letter-sync="true"/>)", kSame},
    {R"(<text:page-number style:num-letter-sync="true" text:page-adjust="-1"/>)",
     R"(<text:page-number style:num-letter-sync="1" text:page-adjust="-1"/>)"},
    {"<text:chapter/>", R"(<text:chapter text:display="name" text:outline-level="0"/>)"},
    {R"(<text:chapter text:display="bogus"/>)",
     R"(<text:chapter text:display="true" text:outline-level="0"/>)"},
    {"<text:placeholder/>", R"(<text:placeholder text:placeholder-type="text"/>)"},
    {R"(<text:database-display><form:connection-resource xlink:href="h"/>x</text:database-display>)",
     R"(<text:database-display text:table-name="" text:column-name="">x<form:connection-resource xlink:href="h"/></text:database-display>)"},
    {R"(<text:execute-macro><office:event-listeners/>run</text:execute-macro>)",
     R"(<text:execute-macro>run<office:event-listeners/></text:execute-macro>)"},
    {"<text:script>code</text:script>", R"(<text:script xlink:href=""/>)"},
    {R"(<text:alphabetical-index-entry-template text:outline-level="separator" text:style-name=""/>)", kSame},
    {R"(<text:table-of-content-entry-template text:outline-level="separator" text:style-name=""/>)",
     R"(<text:table-of-content-entry-template text:outline-level="0" text:style-name=""/>)"},
    {"<text:index-entry-span>x</text:index-entry-span>", kSame},
    {"<text:index-entry-text>x</text:index-entry-text>", "<text:index-entry-text/>"},
    {"<text:toc-mark/>", R"(<text:toc-mark text:string-value=""/>)"},
    {"<text:index-source-styles/>", R"(<text:index-source-styles text:outline-level="0"/>)"},
    {"<text:index-entry-bibliography/>",
     R"(<text:index-entry-bibliography text:bibliography-data-field="address"/>)"},
    {R"(<text:tracked-changes text:track-changes="false"><text:changed-region text:id="i"><text:insertion><office:change-info/><text:p/></text:insertion><text:deletion><text:p>x<text:span>y</text:span></text:p></text:deletion></text:changed-region></text:tracked-changes>)",
     R"(<text:tracked-changes text:track-changes="0"><text:changed-region text:id="i"><text:insertion><office:change-info/></text:insertion><text:deletion><text:p>x<text:span>y</text:span></text:p></text:deletion></text:changed-region></text:tracked-changes>)"},
};

// Styles.
constexpr Row kStyles[] = {
    {R"(<style:style style:name="n"><style:text-properties/><style:map style:condition="c" style:apply-style-name="a"/><style:paragraph-properties/></style:style>)",
     R"(<style:style style:name="n" style:family="text"><style:text-properties/><style:map style:condition="c" style:apply-style-name="a"/><style:paragraph-properties/></style:style>)"},
    {"<style:default-style><style:map/></style:default-style>",
     R"(<style:default-style style:family="text"/>)"},
    {R"(<text:outline-style style:name="Outline"/>)", "<text:outline-style/>"},
    {R"(<style:header style:display="false"><text:p/></style:header>)",
     R"(<style:header style:display="0"><text:p/></style:header>)"},
    {"<style:region-left><text:list/><text:p/></style:region-left>",
     "<style:region-left><text:p/></style:region-left>"},
    {"<text:sort-key/>", R"(<text:sort-key text:key="address"/>)"},
    {"<text:note-continuation-notice-forward>x</text:note-continuation-notice-forward>", kSame},
    {R"(<style:text-properties fo:font-family="Arial, sans-serif" style:font-name="a,b" style:font-family-asian=",x" style:font-family-complex="'A B',c"/>)",
     R"(<style:text-properties style:font-name="a,b" fo:font-family="Arial" style:font-family-asian=",x" style:font-family-complex="'A B'"/>)"},
    {R"(<style:text-properties text:condition=""/>)", "<style:text-properties/>"},
    {R"(<style:text-properties text:condition="none"/>)", kSame},
    {R"(<style:text-properties style:text-underline-type="single" style:text-underline-style="solid" style:text-overline-type="double" style:text-overline-style="wave" fo:color="#ff0000"/>)",
     R"(<style:text-properties fo:color="#ff0000" style:text-overline-style="wave" style:text-overline-type="double" style:text-underline-style="solid" style:text-underline-type="single"/>)"},
    {R"(<style:text-properties style:text-line-through-width="auto" style:text-underline-width="auto"/>)",
     R"(<style:text-properties style:text-line-through-width="0" style:text-underline-width="auto"/>)"},
    {R"(<style:chart-properties chart:vertical="1" chart:lines="0"/>)",
     R"(<style:chart-properties chart:vertical="true" chart:lines="false"/>)"},
    {R"(<style:paragraph-properties style:auto-text-indent="true" style:font-independent-line-spacing="1"/>)",
     R"(<style:paragraph-properties style:font-independent-line-spacing="true" style:auto-text-indent="1"/>)"},
    {R"(<style:graphic-properties draw:auto-grow-width="1" draw:fit-to-contour="true" style:shrink-to-fit="0" svg:stroke-linecap="square"/>)",
     R"(<style:graphic-properties svg:stroke-linecap="square" draw:auto-grow-width="true" draw:fit-to-contour="1" style:shrink-to-fit="false"/>)"},
    {R"(<style:drawing-page-properties draw:fill-hatch-solid="true" presentation:display-footer="1"/>)",
     R"(<style:drawing-page-properties draw:fill-hatch-solid="1" presentation:display-footer="true"/>)"},
    {R"(<style:drop-cap style:length="word"/>)", R"(<style:drop-cap style:length="0"/>)"},
    {"<style:columns/>", R"(<style:columns fo:column-count="0"/>)"},
    {"<style:background-image><office:binary-data>QQ==</office:binary-data></style:background-image>",
     R"(<style:background-image xlink:href=""><office:binary-data>QQ==</office:binary-data></style:background-image>)"},
    {R"(<style:background-image style:position="center center" xlink:href=""/>)",
     R"(<style:background-image style:position="left" xlink:href=""/>)"},
    {R"(<style:graphic-properties style:protect="position size"/>)", kSame},
    {R"(<style:section-properties style:protect="position size"/>)",
     R"(<style:section-properties style:protect="0"/>)"},
    {R"(<style:table-cell-properties style:rotation-angle="45deg"/>)",
     R"(<style:table-cell-properties style:rotation-angle="45"/>)"},
    {"<style:tab-stop/>", R"(<style:tab-stop style:position=""/>)"},
    {R"(<style:table-properties tableooo:tab-color="#ff0000"/>)", kSame},
    {R"(<number:number number:decimal-places="-1" number:display-factor="1000.50"/>)",
     R"(<number:number number:display-factor="1000.5" number:decimal-places="-1"/>)"},
    {R"(<number:number number:decimal-places="abc"/>)", R"(<number:number number:decimal-places="0"/>)"},
    {R"(<number:currency-style style:name="n"><number:text> a </number:text><number:number/><number:text/></number:currency-style>)",
     kSame},
    {R"(<number:boolean-style style:name="n"><number:number/><number:boolean/></number:boolean-style>)",
     R"(<number:boolean-style style:name="n"><number:boolean/></number:boolean-style>)"},
    {"<number:am-pm><number:text/></number:am-pm>", "<number:am-pm/>"},
    {R"(<style:font-face style:name="n" svg:font-family="'Liberation Serif', serif" svg:font-weight="700" svg:units-per-em="2048" svg:stemv="0.5"/>)",
     R"(<style:font-face svg:font-family="'Liberation Serif', serif" svg:font-weight="700" svg:units-per-em="2048" svg:stemv="0" style:name="n"/>)"},
    {"<svg:font-face-src><svg:font-face-uri/><svg:font-face-name/></svg:font-face-src>",
     R"(<svg:font-face-src><svg:font-face-uri xlink:href=""/><svg:font-face-name/></svg:font-face-src>)"},
};

// Tables.
constexpr Row kTables[] = {
    {R"(<table:table-cell table:number-columns-repeated="16384" office:value="12.50"/>)", kSame},
    {R"(<table:covered-table-cell office:value="12.50"/>)",
     R"(<table:covered-table-cell office:value="12.5"/>)"},
    {R"(<table:table-cell office:boolean-value="yes"/>)", R"(<table:table-cell office:boolean-value="1"/>)"},
    {R"(<table:table-cell office:boolean-value=""/>)", R"(<table:table-cell office:boolean-value="0"/>)"},
    {R"(<table:covered-table-cell office:boolean-value="yes"/>)",
     R"(<table:covered-table-cell office:boolean-value="0"/>)"},
    {R"(<table:table table:protected="true" table:use-first-row-styles="1" table:use-banding-columns-styles="0"/>)",
     R"(<table:table table:protected="1" table:use-first-row-styles="true" table:use-banding-columns-styles="false"/>)"},
    {"<table:table><table:table-rows><table:table-row/><text:soft-page-break/></"
     "table:table-rows><table:table-row><text:soft-page-break/></table:table-row></table:table>",
     "<table:table><table:table-rows><table:table-row/><text:soft-page-break/></"
     "table:table-rows><table:table-row/></table:table>"},
    {"<table:table-template><table:body/><table:first-row table:style-name=\"s\"/></table:table-template>",
     kSame},
    {R"(<table:table-template text:name="" text:style-name="s"/>)",
     R"(<table:table-template text:style-name="s"/>)"},
    {"<table:cell-range-source/>",
     R"(<table:cell-range-source table:name="" table:last-column-spanned="0" table:last-row-spanned="0"/>)"},
    {R"(<table:label-range table:label-cell-range-address="a" table:data-cell-range-address="b"/>)",
     R"(<table:label-range table:label-cell-range-address="a" table:data-cell-range-address="b" table:orientation="column"/>)"},
    {R"(<table:label-range table:label-cell-range-address="a" table:data-cell-range-address="b" table:orientation="bogus"/>)",
     R"(<table:label-range table:label-cell-range-address="a" table:data-cell-range-address="b" table:orientation="row"/>)"},
    {"<table:operation/>", R"(<table:operation table:name="trace-dependents" table:index="0"/>)"},
    {R"(<table:sort table:case-sensitive="false"/>)", R"(<table:sort table:case-sensitive="0"/>)"},
    {R"(<table:cell-address table:column="-1" table:row="x" table:table="3"/>)",
     R"(<table:cell-address table:column="-1" table:row="0" table:table="3"/>)"},
    {R"(<table:data-pilot-display-info table:enabled="true" table:data-field="f" table:member-count="3" table:display-member-mode="from-top"/>)",
     R"(<table:data-pilot-display-info table:enabled="1" table:data-field="f" table:member-count="3" table:display-member-mode="from-top"/>)"},
    {"<table:data-pilot-sort-info/>",
     R"(<table:data-pilot-sort-info table:sort-mode="data" table:data-field="" table:order="ascending"/>)"},
    {R"(<table:insertion table:id="i"/>)",
     R"(<table:insertion table:type="row" table:position="0" table:id="i"/>)"},
    {R"(<table:insertion table:type="table" table:position="-2" table:id="i"/>)", kSame},
    {R"(<table:tracked-changes table:track-changes="true"/>)",
     R"(<table:tracked-changes table:track-changes="1"/>)"},
    {R"(<table:change-track-table-cell office:value="2.50" office:date-value="2.50"/>)",
     R"(<table:change-track-table-cell office:value="2.5" office:date-value="2.50"/>)"},
};

// Drawing, forms, charts, presentations, animation.
constexpr Row kDrawing[] = {
    {"<draw:rect/>", kSame},
    {"<draw:line/>", R"(<draw:line svg:x1="" svg:y1="" svg:x2="" svg:y2=""/>)"},
    {R"(<draw:glue-point draw:align="bogus"/>)",
     R"(<draw:glue-point draw:id="0" svg:x="" svg:y="" draw:align="top-left"/>)"},
    {"<draw:g><draw:g><draw:rect/></draw:g><draw:line svg:x1=\"\" svg:y1=\"\" svg:x2=\"\" "
     "svg:y2=\"\"/></draw:g>",
     kSame},
    {R"(<draw:circle draw:start-angle="30.50" draw:end-angle="90deg"/>)",
     R"(<draw:circle draw:start-angle="30.5" draw:end-angle="90"/>)"},
    {R"(<draw:page-thumbnail presentation:placeholder="1" presentation:user-transformed="true"/>)",
     R"(<draw:page-thumbnail presentation:placeholder="true" presentation:user-transformed="1"/>)"},
    {R"(<draw:frame draw:copy-of="c" presentation:user-transformed="1" presentation:placeholder="0" presentation:class="title" draw:caption-id="ci" style:rel-height="rh" style:rel-width="rw" text:anchor-page-number="1" text:anchor-type="char" table:table-background="true" table:end-y="ey" table:end-x="ex" table:end-cell-address="ec" draw:transform="t" presentation:class-names="pc" draw:class-names="dc" draw:id="i" draw:z-index="2" svg:y="y" svg:x="x" svg:height="h" svg:width="w" draw:layer="l" draw:text-style-name="ts" draw:style-name="s" presentation:style-name="ps" draw:name="n"/>)",
     R"(<draw:frame draw:name="n" presentation:style-name="ps" draw:style-name="s" draw:text-style-name="ts" draw:layer="l" svg:width="w" svg:height="h" svg:x="x" svg:y="y" draw:z-index="2" draw:id="i" draw:class-names="dc" presentation:class-names="pc" draw:transform="t" table:end-cell-address="ec" table:end-x="ex" table:end-y="ey" table:table-background="1" text:anchor-type="char" text:anchor-page-number="1" style:rel-width="rw" style:rel-height="rh" draw:caption-id="ci" presentation:class="title" presentation:placeholder="false" presentation:user-transformed="true" draw:copy-of="c"/>)"},
    {R"(<draw:image xlink:href="a b%41%zz&amp;"/>)", kSame},
    {"<draw:image><office:binary-data>QU<![CDATA[JD]]></office:binary-data></draw:image>",
     R"(<draw:image xlink:href=""><office:binary-data>QUJD</office:binary-data></draw:image>)"},
    {"<draw:applet/>", kSame},
    {"<draw:area-circle/>", R"(<draw:area-circle svg:cx="" svg:cy="" svg:r=""/>)"},
    {R"(<draw:hatch draw:name="n"/>)", R"(<draw:hatch draw:name="n" draw:style="single"/>)"},
    {R"(<draw:hatch draw:name="n" draw:style="bogus"/>)",
     R"(<draw:hatch draw:name="n" draw:style="linear"/>)"},
    {"<draw:gradient/>", R"(<draw:gradient draw:style="linear"/>)"},
    {R"(<svg:stop svg:offset="50%"/>)", R"(<svg:stop svg:offset="50"/>)"},
    {"<svg:stop/>", R"(<svg:stop svg:offset="0"/>)"},
    {R"(<draw:enhanced-geometry draw:mirror-vertical="1" draw:extrusion-color="false" draw:type="any"/>)",
     R"(<draw:enhanced-geometry draw:type="any" draw:mirror-vertical="true" draw:extrusion-color="false"/>)"},
    {R"(<draw:handle draw:handle-switched="true"/>)",
     R"(<draw:handle draw:handle-switched="1" draw:handle-position=""/>)"},
    {"<dr3d:scene><dr3d:scene><dr3d:scene/></dr3d:scene></dr3d:scene>", kSame},
    {"<draw:rect><svg:title>a</svg:title><svg:desc>b</svg:desc></draw:rect>", kSame},
    {"<form:text/>", R"(<form:text form:id=""/>)"},
    {R"(<form:number form:id="" form:value="3.50"/>)", R"(<form:number form:value="3.5" form:id=""/>)"},
    {R"(<form:date form:id="" form:value="3.50"/>)", R"(<form:date form:value="3.50" form:id=""/>)"},
    {R"(<form:property form:property-name="p" office:value-type="string" office:string-value="s"/>)",
     R"(<form:property form:property-name="p" office:value-type="string" office:value="" office:date-value="" office:time-value="" office:boolean-value="0" office:string-value="s"/>)"},
    {R"(<form:option form:value="v">x</form:option>)", kSame},
    {"<xforms:model><xforms:instance>x</xforms:instance></xforms:model>", "<xforms:model/>"},
    {R"(<form:column><form:grid/><form:text form:id="a"/><form:button/></form:column>)",
     R"(<form:column><form:text form:id="a"/></form:column>)"},
    {R"(<chart:legend chart:style-name="s"/>)",
     R"(<chart:legend chart:legend-position="start" style:legend-expansion="wide" style:legend-expansion-aspect-ratio="0" chart:style-name="s"/>)"},
    {R"(<chart:data-point chart:repeated="12"/>)", kSame},
    {R"(<chart:series chart:class="any"/>)", kSame},
    {R"(<chart:grid chart:class="any"/>)", R"(<chart:grid chart:class="major"/>)"},
    {"<chart:plot-area/>", kSame},
    {"<chart:axis/>", R"(<chart:axis chart:dimension="x"/>)"},
    {R"(<presentation:settings presentation:show="s"><presentation:show presentation:name="n" presentation:pages="p"/></presentation:settings>)",
     kSame},
    {"<presentation:date-time-decl>x</presentation:date-time-decl>",
     R"(<presentation:date-time-decl presentation:name="" presentation:source="fixed">x</presentation:date-time-decl>)"},
    {"<presentation:placeholder/>",
     R"(<presentation:placeholder presentation:object="title" svg:x="" svg:y="" svg:width="" svg:height=""/>)"},
    {R"(<presentation:placeholder presentation:object="vertical_outline" svg:x="" svg:y="" svg:width="" svg:height=""/>)",
     kSame},
    {R"(<anim:transitionFilter smil:type="barWipe" smil:subtype="topToBottom" smil:begin="1s" smil:decelerate="0.25" smil:accelerate="0.50" smil:autoReverse="1"/>)",
     R"(<anim:transitionFilter smil:accelerate="0.5" smil:decelerate="0.25" smil:type="barWipe" smil:subtype="topToBottom" smil:begin="1s" smil:autoReverse="true"/>)"},
    {R"(<anim:par smil:autoReverse="1" smil:accelerate="0.50"/>)",
     R"(<anim:par smil:accelerate="0.5" smil:autoReverse="1"/>)"},
    {R"(<anim:par smil:autoReverse="true"/>)", R"(<anim:par smil:autoReverse="1"/>)"},
    {"<anim:animateTransform/>", R"(<anim:animateTransform smil:attributeName="" svg:type="translate"/>)"},
    {"<anim:set/>", R"(<anim:set smil:attributeName=""/>)"},
    {"<anim:iterate><anim:seq><anim:par/><anim:par/></anim:seq></anim:iterate>", kSame},
};

// Formulas.
constexpr Row kMath[] = {
    {R"(<math:mstyle math:scriptsizemultiplier="0.71"/>)", kSame},
    {R"(<math:mo math:stretchy="true">+</math:mo>)", R"(<math:mo math:stretchy="1">+</math:mo>)"},
    {"<math:mi>a<math:malignmark/>b</math:mi>", "<math:mi>ab<math:malignmark/></math:mi>"},
    {"<math:mi></math:mi>", "<math:mi/>"},
    {R"(<math:mtd math:columnspan="2" math:rowspan="x"/>)",
     R"(<math:mtd math:rowspan="0" math:columnspan="2"/>)"},
    {"<math:apply><math:plus><math:ci>x</math:ci></math:plus><math:ci>a</math:ci><math:ci>b</math:ci></"
     "math:apply>",
     "<math:apply><math:plus/><math:ci>a</math:ci><math:ci>b</math:ci></math:apply>"},
    {"<math:cn>1<math:sep/>2</math:cn>", "<math:cn>12<math:sep/></math:cn>"},
    {"<math:annotation>a<!-- -->b</math:annotation>", "<math:annotation>ab</math:annotation>"},
    {"<math:annotation-xml><math:ci>a</math:ci></math:annotation-xml>", "<math:annotation-xml/>"},
    {"<math:piecewise><math:piece/><math:ci>a</math:ci><math:otherwise/></math:piecewise>",
     "<math:piecewise><math:piece/><math:otherwise/></math:piecewise>"},
    {"<math:apply><math:pi/><math:plus/></math:apply>", "<math:apply><math:plus/></math:apply>"},
};

class Departures : public testing::TestWithParam<Row> {};

TEST_P(Departures, AreKept) {
    const Row& row = GetParam();
    const std::string out = row.out ? row.out : row.in;
    EXPECT_EQ(test::RoundTrip(row.in), out);
    EXPECT_EQ(test::RoundTrip(out), out) << "and what is written stays";
}

std::string NameOf(const testing::TestParamInfo<Row>& given) {
    std::string name;
    const std::string_view in = given.param.in;
    for (const char c : in.substr(1, in.find_first_of(" />") - 1))
        name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name + "_" + std::to_string(given.index);
}

INSTANTIATE_TEST_SUITE_P(Office, Departures, testing::ValuesIn(kOffice), NameOf);
INSTANTIATE_TEST_SUITE_P(Text, Departures, testing::ValuesIn(kText), NameOf);
INSTANTIATE_TEST_SUITE_P(Styles, Departures, testing::ValuesIn(kStyles), NameOf);
INSTANTIATE_TEST_SUITE_P(Tables, Departures, testing::ValuesIn(kTables), NameOf);
INSTANTIATE_TEST_SUITE_P(Drawing, Departures, testing::ValuesIn(kDrawing), NameOf);
INSTANTIATE_TEST_SUITE_P(Math, Departures, testing::ValuesIn(kMath), NameOf);

} // namespace
