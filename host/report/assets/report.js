/* The examiner's report: builds the sortable, searchable tables of each page
   from the data file loaded beside it. Everything stays on the local file
   system; nothing is fetched. Without the table library (a page copied
   without its assets folder) the rows still show, as a plain table. */
(function () {
  'use strict';

  var hasLibrary = typeof window.jQuery === 'function' && jQuery.fn && jQuery.fn.DataTable;

  function esc(text) {
    return String(text).replace(/[&<>"']/g, function (c) {
      return { '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;', "'": '&#39;' }[c];
    });
  }

  // A converted cell is [shown, stored]: the readable form shows, the stored
  // value is on hover, sorting follows the stored value, search finds both.
  function storedNumber(cell) {
    if (!Array.isArray(cell)) return -Infinity;
    var n = parseFloat(String(cell[1]).split(';++::++;')[0]);
    return isNaN(n) ? -Infinity : n;
  }

  function renderTime(cell, type) {
    if (type === 'sort' || type === 'type') return storedNumber(cell);
    if (!Array.isArray(cell)) return type === 'display' ? esc(cell == null ? '' : cell) : (cell == null ? '' : cell);
    if (type === 'display') return '<span class="time" title="' + esc(cell[1]) + '">' + esc(cell[0]) + '</span>';
    return cell[0] + ' ' + cell[1];
  }

  function renderText(cell, type) {
    if (cell == null) return '';
    return type === 'display' ? esc(cell) : cell;
  }

  function renderImage(cell, type) {
    if (type !== 'display') return cell || '';
    return cell ? '<a href="' + esc(cell) + '"><img class="thumb" alt="" src="' + esc(cell) + '"></a>' : '';
  }

  function renderLink(cell, type) {
    if (type !== 'display' || !cell) return renderText(cell, type);
    return '<a href="' + esc('table-' + cell + '.html') + '">' + esc(cell) + '</a>';
  }

  var renderers = { time: renderTime, image: renderImage, table: renderLink, text: renderText };

  function columnDefinitions(columns) {
    return columns.map(function (column) {
      var definition = { title: esc(column.title), render: renderers[column.kind] || renderText };
      if (column.kind === 'time') definition.type = 'num';
      if (column.kind === 'image') { definition.orderable = false; definition.searchable = false; }
      return definition;
    });
  }

  function plainTable(element, content) {
    var head = '<thead><tr>' + content.columns.map(function (c) { return '<th>' + esc(c.title) + '</th>'; }).join('') +
      '</tr></thead>';
    var body = content.rows.map(function (row) {
      return '<tr>' + row.map(function (cell, i) {
        return '<td>' + (renderers[content.columns[i].kind] || renderText)(cell, 'display') + '</td>';
      }).join('') + '</tr>';
    }).join('');
    element.innerHTML = head + '<tbody>' + body + '</tbody>';
  }

  function dataTable(element, content, order) {
    if (!hasLibrary) { plainTable(element, content); return null; }
    return jQuery(element).DataTable({
      data: content.rows,
      columns: columnDefinitions(content.columns),
      deferRender: true,
      scrollX: true,
      order: order,
      pageLength: 25,
      lengthMenu: [[10, 25, 100, 1000, -1], [10, 25, 100, 1000, 'All']]
    });
  }

  function onReady(work) {
    if (document.readyState === 'loading') document.addEventListener('DOMContentLoaded', work);
    else work();
  }

  function fillSelect(select, values, emptyLabel) {
    values.forEach(function (value) {
      var option = document.createElement('option');
      option.value = value;
      option.textContent = value === '' ? emptyLabel : value;
      select.appendChild(option);
    });
  }

  function dayStart(text) {
    var t = Date.parse(text + 'T00:00:00Z');
    return isNaN(t) ? null : t / 1000;
  }

  // The timeline's own filters: user, table and a range of days (UTC),
  // on top of the search box.
  function timelineFilters(table, content) {
    var user = document.getElementById('filter-user');
    var source = document.getElementById('filter-table');
    var from = document.getElementById('filter-from');
    var to = document.getElementById('filter-to');
    fillSelect(user, content.users, '(no account)');
    fillSelect(source, content.tables, '');
    var at = {};
    content.columns.forEach(function (c, i) { at[c.key] = i; });
    jQuery.fn.dataTable.ext.search.push(function (settings, searchData, index, row) {
      if (settings.nTable.id !== 'timeline') return true;
      if (user.value !== '*' && row[at.user] !== user.value) return false;
      if (source.value !== '*' && row[at.table] !== source.value) return false;
      var seconds = storedNumber(row[at.time]);
      var first = dayStart(from.value);
      var last = dayStart(to.value);
      if (first !== null && seconds < first) return false;
      if (last !== null && seconds >= last + 86400) return false;
      return true;
    });
    [user, source, from, to].forEach(function (control) {
      control.addEventListener('change', function () { table.draw(); });
    });
  }

  window.vlcReport = {
    table: function (content) {
      onReady(function () { dataTable(document.getElementById('rows'), content, []); });
    },
    timeline: function (content) {
      onReady(function () {
        var table = dataTable(document.getElementById('timeline'), content, [[0, 'asc']]);
        if (table) timelineFilters(table, content);
      });
    }
  };

  // Static tables of the overview: sortable and searchable as they are.
  onReady(function () {
    if (!hasLibrary) return;
    jQuery('table.sortable').each(function () {
      var many = jQuery(this).find('tbody tr').length > 25;
      jQuery(this).DataTable({ paging: many, searching: many, info: many, order: [], autoWidth: false });
    });
  });
})();
